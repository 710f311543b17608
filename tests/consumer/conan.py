"""Runs the recipe of Conan: the classes that it uses are here. Configuring is done for real with the files that the recipe
exports, so none may be missing, and every variable must be one of the project; what is installed comes from the build tree.

  conan.py SOURCE BUILD WORK     installs to WORK/installed
"""
import pathlib
import runpy
import shutil
import subprocess
import sys
import types

SOURCE, BUILD, WORK = (pathlib.Path(argument) for argument in sys.argv[1:])


class ConanFile:
    export_sources_folder = WORK / "exported"

    def __init__(self):
        self.required = []
        self.cpp_info = types.SimpleNamespace(set_property=lambda name, value: None)

    def requires(self, name):
        self.required.append(name)


class Toolchain:
    variables = {}

    def __init__(self, recipe):
        self.cache_variables = Toolchain.variables

    def generate(self):
        pass


class CMake:
    def __init__(self, recipe):
        self.recipe = recipe

    def configure(self):
        options = [f"-D{name}={value}" for name, value in Toolchain.variables.items()]
        run = subprocess.run(["cmake", "-S", self.recipe.export_sources_folder, "-B", WORK / "configured", "-G", "Ninja"] + options,
                             check=True, capture_output=True, text=True)
        if "not used by the project" in run.stderr:
            sys.exit(run.stderr)

    def build(self):
        pass

    def install(self):
        subprocess.run(["cmake", "--install", BUILD, "--prefix", WORK / "installed"], check=True)


def copy(recipe, pattern, source, target):
    for path in source.glob(pattern):
        if path.is_dir():
            shutil.copytree(path, target / path.relative_to(source), dirs_exist_ok=True)
        else:
            (target / path.relative_to(source)).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, target / path.relative_to(source))


def module(name, **contents):
    sys.modules[name] = types.ModuleType(name)
    sys.modules[name].__dict__.update(contents)


module("conan", ConanFile=ConanFile)
module("conan.tools")
module("conan.tools.cmake", CMake=CMake, CMakeDeps=Toolchain, CMakeToolchain=Toolchain, cmake_layout=lambda recipe: None)
module("conan.tools.files", copy=copy)
recipe = runpy.run_path(str(SOURCE / "packaging/conan/conanfile.py"))["KxcoreRecipe"]()
for step in ("set_version", "export_sources", "requirements", "layout", "generate", "build", "package", "package_info"):
    getattr(recipe, step)()
if f"VERSION {recipe.version} " not in (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8"):
    sys.exit(f"the recipe has version {recipe.version}")
