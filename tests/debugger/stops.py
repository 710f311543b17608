"""Checks the transcripts of the page on stops. GDB runs this: gdb ... -x stops.py PROGRAM.

The page shows one block for each way to stop. Each line of a block must be one that GDB prints, in the same order. The numbers
of lines and frames are not compared, because they change with every edit of a header.
"""

import os
import re
import signal

import gdb


def comparable(line):
    line = re.sub(r"^#\d+\s+(0x\w+ in )?", "", line)
    line = re.sub(r"from \S*/", "from ", line)
    return re.sub(r":\d+$", "", line)


def check(way, block):
    gdb.execute("run %d" % way)
    name = signal.Signals(int(gdb.parse_and_eval("$_siginfo.si_signo"))).name
    printed = [comparable(line) for line in gdb.execute("backtrace", to_string=True).splitlines()]
    stop, *frames = block.splitlines()
    if "signal %s," % name not in stop:
        raise gdb.GdbError("way %d: %s, the page says: %s" % (way + 1, name, stop))
    for frame in frames:
        if comparable(frame) not in printed:
            raise gdb.GdbError("way %d: the page shows\n%s\nwhich is not, or too late, in\n%s"
                               % (way + 1, frame, "\n".join(printed)))
        del printed[: printed.index(comparable(frame)) + 1]


for setting in ("width 0", "confirm off", "print address off", "filename-display basename", "disable-randomization off",
                "print frame-arguments scalars"):
    gdb.execute("set " + setting)
with open(os.environ["KX_PAGE"], encoding="utf-8") as page:
    blocks = re.findall(r"^## \d+\. .*?^```\n(.*?)^```$", page.read(), re.MULTILINE | re.DOTALL)
for way, block in enumerate(blocks):
    check(way, block)
print("%d ways to stop are as the page says" % len(blocks))
gdb.execute("kill")
