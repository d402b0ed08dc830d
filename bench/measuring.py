"""What the commands that measure programs have in common: a process on chosen cores, with its time and memory, and tables."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile


class IdleMemory:
    """Memory that nothing uses, filled with pages of a file. The host of a virtual machine takes such memory back, and then
    the first touch of a page costs ten times what it costs elsewhere: large programs, which get beyond what others have
    just left, would seem to slow down. Pages of a file stay until a program wants them. On other machines nothing is filled.
    """
    PIECE = 1 << 28
    CACHED_AT_MOST = 24  # so many pieces in a row that were still there: all of it is

    def __init__(self, folder):
        self.file = None
        if "hypervisor" not in pathlib.Path("/proc/cpuinfo").read_text().split():
            return
        # A hole of the size of the memory; it takes no room on the disk.
        self.file = tempfile.TemporaryFile(dir=folder)
        memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
        self.size = memory - memory % self.PIECE
        self.file.truncate(self.size)
        self.place = 0
        self.buffer = bytearray(1 << 20)

    def fill(self, command, folder=None):
        """What a program left behind is filled again from where the last call ended: there lie the pages that went first.
        The files among the words of the command and those in the folder are read once more, so that none has to come from
        the disk."""
        cached = 0
        while self.file and cached < self.CACHED_AT_MOST:
            before = self.free()
            self.read_piece()
            cached = 0 if before - self.free() > self.PIECE // 2 else cached + 1
        left = pathlib.Path(folder).rglob("*") if folder else []
        for path in filter(os.path.isfile, [*command, *left]):
            self.read_through(path)

    def read_piece(self):
        end = self.place + self.PIECE
        while self.place < end:
            self.place += os.preadv(self.file.fileno(), [self.buffer], self.place)
        if self.place >= self.size:
            self.place = 0

    @staticmethod
    def read_through(path):
        with open(path, "rb", buffering=0) as file:
            while file.read(1 << 20):
                pass

    @staticmethod
    def free():
        return os.sysconf("SC_AVPHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")


def measured(command, cores, home):
    """Runs a program once on the last `cores` of the processors; the JSON object that it prints, with the processor time and
    the peak of memory of the process. The peak is never less than what this program had when it started the other one,
    some 20 MB. In `home` it gets a folder that it may fill, which is removed afterwards.
    """
    with tempfile.TemporaryDirectory(dir=home) as folder:
        return measured_in(folder, command, cores)


def measured_in(folder, command, cores):
    """The same in a folder that stays."""
    processors = set(sorted(os.sched_getaffinity(0))[-cores:])
    with tempfile.TemporaryFile() as out:
        child = subprocess.Popen(command, stdout=out, env={**os.environ, "XDG_DATA_HOME": folder, "XDG_CONFIG_HOME": folder},
                                 preexec_fn=lambda: os.sched_setaffinity(0, processors))
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode != 0:
            sys.exit(f"{' '.join(map(str, command))} ended with {child.returncode}")
        out.seek(0)
        result = json.loads(out.read())
    return {**result, "cpu": usage.ru_utime + usage.ru_stime, "peak": usage.ru_maxrss * 1024}


def print_table(heads, rows):
    """Columns as wide as they need; all but the first to the right."""
    cells = [heads, *rows]
    widths = [max(len(row[column]) for row in cells) for column in range(len(heads))]
    for row in cells:
        first, *others = (cell.ljust(width) if column == 0 else cell.rjust(width)
                          for column, (cell, width) in enumerate(zip(row, widths)))
        print("  ".join([first, *others]).rstrip())
    print()


def say(sentence):
    """A line of progress that the next one replaces."""
    print(f"\r{sentence}".ljust(79), end="", file=sys.stderr, flush=True)


def end_saying():
    print("\r".ljust(80) + "\r", end="", file=sys.stderr, flush=True)
