"""A program on a terminal of its own, driven key by key: each key is sent when the program waits for one."""
import os
import pty
import select
import struct
import subprocess
import termios
import fcntl

import host

CLEAR = "\x1b[H\x1b[2J"


class Session:
    """`screens` are the texts that were shown, without what moves the cursor or colours it."""

    def __init__(self, test, *arguments, width=80, height=24, **environment):
        try:
            self.main, side = pty.openpty()
        except OSError:  # a root without terminals: pipes, and the program is told that they are one
            self.main = side = None
        self.test = test
        command = [host.PROGRAM, *map(os.fspath, arguments)]
        if side is None:
            environment.update(KRCONTACTS_TERMINAL="all", COLUMNS=str(width), LINES=str(height))
            self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                            stderr=subprocess.STDOUT, cwd=test.folder,
                                            env=test.environment(**environment))
            self.read_end, self.write_end = self.process.stdout.fileno(), self.process.stdin.fileno()
        else:
            fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("HHHH", height, width, 0, 0))
            self.process = subprocess.Popen(command, stdin=side, stdout=side, stderr=side, cwd=test.folder,
                                            env=test.environment(**environment), start_new_session=True)
            os.close(side)
            self.read_end = self.write_end = self.main
        self.seen = ""
        test.addCleanup(self.close)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for pipe in (self.process.stdin, self.process.stdout):
            if pipe is not None:
                pipe.close()
        if self.main is not None:
            os.close(self.main)
            self.main = None

    def _piece(self):
        """What came next; nothing at the end."""
        ready, _, _ = select.select([self.read_end], [], [], host.TIMEOUT)
        self.test.assertTrue(ready, f"nothing more came after:\n{self.seen[-3000:]}")
        try:
            return os.read(self.read_end, 65536)
        except OSError:  # the other side is closed
            return b""

    def until(self, text, start):
        """Reads until `text` was seen behind the place `start`; what was seen from there."""
        raw = b""
        while text not in self.seen[start:]:
            piece = self._piece()
            self.test.assertTrue(piece, f"the program ended without {text!r}:\n{self.seen[-3000:]}")
            raw += piece
            try:
                self.seen += raw.decode()
                raw = b""
            except UnicodeDecodeError:  # a character was cut; its rest comes
                continue
        return host.ESCAPE.sub("", self.seen[start:].split(CLEAR)[-1]).replace("\r\n", "\n")

    def screen(self):
        """The first screen."""
        return self.until("\n> ", 0)

    def press(self, keys, prompt="\n> "):
        """Sends the keys, and gives the screen that then waits for the next."""
        start = len(self.seen)
        os.write(self.write_end, keys.encode())
        return self.until(prompt, start)

    def end(self, keys, code=0):
        """Sends the last keys; what was seen until the program ended."""
        start = len(self.seen)
        os.write(self.write_end, keys.encode())
        rest = b""
        while piece := self._piece():
            rest += piece
        self.seen += rest.decode()
        self.test.assertEqual(code, self.process.wait(host.TIMEOUT), self.seen[-3000:])
        return host.ESCAPE.sub("", self.seen[start:]).replace("\r\n", "\n")
