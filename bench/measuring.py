"""What the commands that measure programs have in common: a process on chosen cores, with its time and memory, and tables."""
import json
import os
import subprocess
import sys
import tempfile


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
