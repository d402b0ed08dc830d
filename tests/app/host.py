"""Runs the command-line host for the tests: each test has a home folder of its own, so that nothing that a test
changes reaches the user's settings or another test."""
import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else None
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TIMEOUT = 300
# What moves the cursor or colours a text.
ESCAPE = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]")

# Constant -> value, in the catalogue's order.
ISSUES = {
    "KRIssueDuplicateNames": "KRIssueDuplicateNames",
    "KRIssueDuplicateInfo": "Duplicate Info",
    "KRIssueIncompleteName": "KRIssueIncompleteName",
    "KRIssueBlankName": "KRIssueBlankName",
    "KRIssueInvalidCharacters": "KRIssueInvalidCharacters",
    "KRIssueDuplicatePhoneNumber": "KRIssueDuplicatePhoneNumber",
    "KRIssueDuplicateEmailAddress": "KRIssueDuplicateEmailAddress",
    "KRIssueDuplicateAddress": "KRIssueDuplicateAddress",
    "KRIssuePhonesDuplicatedAmongMultipleContacts": "KRIssuePhonesDuplicatedAmongMultipleContacts",
    "KRIssueEmailsDuplicatedAmongMultipleContacts": "KRIssueEmailsDuplicatedAmongMultipleContacts",
    "KRIssueUnusualTitle": "KRIssueUnusualTitle",
    "KRIssueUnusualSuffix": "KRIssueUnusualSuffix",
    "KRIssueSpacingInTheFirstName": "KRIssueSpacingInTheFirstName",
    "KRIssueHasCompanyNameNoTitle": "KRIssueHasCompanyNameNoTitle",
    "KRIssueNoteWithSpacingOnly": "KRIssueNoteWithSpacingOnly",
}
CATALOGUE = list(ISSUES.values())


class Result:
    def __init__(self, code, out, err):
        self.code = code
        self.out = out
        self.err = err

    def json(self):
        return json.loads(self.out)


class HostTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="krcontacts-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = self.folder / "home"
        self.home.mkdir()

    def environment(self, **more):
        keep = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "COLUMNS")}
        keep.update(KRCONTACTS_HOME=str(self.home), LC_ALL="en_US.UTF-8", TERM="xterm-256color")
        keep.update(more)
        return keep

    def run_host(self, *arguments, code=0, stdin=b"", cwd=None, **environment):
        """Runs the program; fails when it does not exit with `code`."""
        done = subprocess.run([PROGRAM, *map(os.fspath, arguments)], input=stdin, capture_output=True, timeout=TIMEOUT,
                              cwd=cwd or self.folder, env=self.environment(**environment))
        result = Result(done.returncode, done.stdout.decode(), done.stderr.decode())
        self.assertEqual(code, result.code, f"{arguments}\n{result.out[-2000:]}\n{result.err[-2000:]}")
        return result

    def start_host(self, *arguments):
        """Starts the program, to be waited for by `communicate`."""
        return subprocess.Popen([PROGRAM, *map(os.fspath, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, cwd=self.folder, env=self.environment())

    def run_on_terminal(self, *arguments, width=80, both=False, code=0, **environment):
        """Runs the program with standard output (with `both`, standard error too) on a terminal of its own; the terminal's
        bytes, and standard error unless it went there."""
        try:
            main, side = pty.openpty()
        except OSError:  # a root without terminals: the program is told that there is one
            return self.run_on_told_terminal(*arguments, width=width, both=both, code=code, **environment)
        import fcntl
        import struct
        import termios
        fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        process = subprocess.Popen([PROGRAM, *map(os.fspath, arguments)], stdin=subprocess.DEVNULL, stdout=side,
                                   stderr=side if both else subprocess.PIPE, cwd=self.folder,
                                   env=self.environment(**environment))
        os.close(side)
        seen = b""
        while True:
            try:
                piece = os.read(main, 65536)
            except OSError:  # the other side is closed
                break
            if not piece:
                break
            seen += piece
        os.close(main)
        err = process.communicate(timeout=TIMEOUT)[1]
        self.assertEqual(code, process.returncode, seen.decode()[-2000:])
        return Result(process.returncode, seen.decode().replace("\r\n", "\n"), (err or b"").decode())

    def run_on_told_terminal(self, *arguments, width, both, code, **environment):
        """The same over pipes."""
        environment.update(KRCONTACTS_TERMINAL="all" if both else "output", COLUMNS=str(width))
        done = subprocess.run([PROGRAM, *map(os.fspath, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT if both else subprocess.PIPE, timeout=TIMEOUT, cwd=self.folder,
                              env=self.environment(**environment))
        self.assertEqual(code, done.returncode, done.stdout.decode()[-2000:])
        return Result(done.returncode, done.stdout.decode(), (done.stderr or b"").decode())

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if isinstance(content, str):
            content = content.encode()
        path.write_bytes(content)
        return path

    def stored_files(self):
        """Every file in the home folder with its bytes."""
        return {str(path.relative_to(self.home)): path.read_bytes()
                for path in sorted(self.home.rglob("*")) if path.is_file()}


def card(*lines, version="3.0"):
    """A card of these lines; a UID is not added."""
    return "\r\n".join(["BEGIN:VCARD", f"VERSION:{version}", *lines, "END:VCARD", ""])


def persons_of(document, issue):
    """The first persons' shown names of an issue's findings, in their order."""
    for context in document["contexts"]:
        if context["issue"] == issue:
            return [finding["persons"][0]["showName"] for finding in context["findings"]]
    return []


def main():
    if PROGRAM is None:
        sys.exit("the path of krcontacts is the first argument")
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
