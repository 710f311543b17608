"""The recipe of kxcore for Conan 2. It builds the source tree that it is in."""
import pathlib
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy

ROOT = pathlib.Path(__file__).resolve().parents[2]


class KxcoreRecipe(ConanFile):
    name = "kxcore"
    license = "MIT"
    description = "Core runtime library: containers, strings, parsers, dynamic values"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    def set_version(self):
        self.version = re.search(r"kxcore VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "core/*", "runtime/*", "tools/*"):
            copy(self, pattern, ROOT, self.export_sources_folder)

    def requirements(self):
        self.requires("simdjson/[>=3.0]")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KXCORE_TESTS"] = False
        toolchain.cache_variables["KXCORE_EXAMPLES"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # The package's own files for CMake are used, because they define the same targets as without Conan.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/kxcore"]
