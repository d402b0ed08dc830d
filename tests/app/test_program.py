#!/usr/bin/env python3
"""The program as a whole: help, version, and how it ends."""
import os
import pty
import signal
import subprocess

import host

BOOK = host.card("N:;Jane;;;", "FN:Jane", "TEL:123", "NOTE:x")
NAMES = ("--issues", "incomplete-name")


class Program(host.HostTest):
    def test_version_tells_both_numbers(self):
        lines = self.run_host("--version").out.splitlines()
        self.assertEqual("krcontacts 1.0", lines[0])
        self.assertRegex(lines[1], r"^1\.0\b.+")
        self.assertRegex(lines[2], r"^desktop address books: (yes|no, .+)$")
        self.assertEqual(3, len(lines))

    def test_help_pages_fit_a_terminal_and_name_every_option(self):
        pages = {
            (): ["scan", "issues", "settings", "properties", "--version", "NO_COLOR", "KRCONTACTS_HOME", "130"],
            ("scan",): ["--issues", "--all-issues", "--json", "--events", "--limit", "--verbose", "--no-progress",
                        "--exit-code"],
            ("issues",): ["use", "drop", "reset", "--json"],
            ("issues", "use"): ["use", "drop", "reset"],
            ("settings",): ["show", "set", "add", "remove", "reset", "export", "import", "--json", "duplicate-names",
                            "prefixes", "suffixes"],
            ("settings", "import"): ["import"],
            ("properties",): ["--json"],
            ("books",): ["show", "add", "--new", "remove", "default", "--dry-run", "--json"],
            ("books", "add"): ["--new"],
            ("import",): ["--into", "--existing", "skip", "update", "both", "ask", "--rejects", "--force", "--dry-run",
                          "--verbose", "--json", "--no-progress"],
            ("export",): ["--to", "--version", "--where", "--id", "--force", "--dry-run", "--verbose", "--no-progress"],
            ("merge",): ["BOOK", "--dry-run", "--json", "--no-progress", "kept", "equal", "trash"],
            ("plan",): ["BOOK", "--apply", "--where", "--id", "values", "--no-progress"],
            ("apply",): ["PLAN", "--book", "--dry-run", "--json", "--no-progress"],
            ("ignored",): ["list", "forget", "--all", "--dry-run", "--json", "--remember", "--hide-ignored"],
            ("trash",): ["list", "show", "restore", "--all", "--into", "remove", "clear", "--yes", "--where", "--dry-run",
                         "--json"],
        }
        for command, words in pages.items():
            result = self.run_host(*command, "--help")
            self.assertEqual("", result.err)
            for word in words:
                self.assertIn(word, result.out, command)
            self.assertEqual([], [line for line in result.out.splitlines() if len(line) > 80 or line.endswith(" ")])
            self.assertEqual(result.out, self.run_host(*command, "-h").out)

    def test_without_a_command_the_help_is_an_error(self):
        result = self.run_host(code=2)
        self.assertEqual("", result.out)
        self.assertIn("Usage:", result.err)

    def test_what_makes_no_sense_exits_with_2(self):
        book = self.write("a.vcf", BOOK)
        for words in (["frobnicate"], ["--frobnicate"], ["scan"], ["scan", "--frobnicate", book],
                      ["scan", "--limit", "-1", book], ["scan", "--limit", "many", book], ["scan", "--limit"],
                      ["scan", "--issues", "blank-name", "--all-issues", book], ["issues", "use"],
                      ["issues", "frobnicate"], ["settings", "set"], ["settings", "set", "prefixes"],
                      ["settings", "frobnicate"], ["properties", "more"], ["scan", "properties", book]):
            result = self.run_host(*words, code=2)
            self.assertEqual("", result.out, words)
            self.assertTrue(result.err.startswith("krcontacts: "), result.err)
            self.assertEqual(1, result.err.count("\n"))

    def test_what_is_not_there_is_named(self):
        self.run_host("books", "add", "--new", "Family")
        book = self.write("a.vcf", BOOK)
        for words in (["fix", "nothere.vcf", "--apply", "blank-name=delete-contact"], ["merge", "nothere.vcf", "a", "b"],
                      ["plan", "nothere.vcf", "--apply", "blank-name=delete-contact"],
                      ["import", book, "--into", "nothere.vcf"]):
            result = self.run_host(*words, code=2)
            self.assertEqual("krcontacts: nothere.vcf: there is no such file, and no book of that name\n", result.err, words)
        result = self.run_host("fix", "no/folder", "--apply", "blank-name=delete-contact", code=2)
        self.assertIn("no/folder: there is no such file", result.err)
        # A name is a name, and what is there is no book by that alone.
        self.assertIn('there is no book "Dr. Fox"', self.run_host("import", book, "--into", "Dr. Fox", code=2).err)
        result = self.run_host("import", book, "--into", "a.vcf", code=2)
        self.assertIn("a.vcf: this is none of your books", result.err)
        self.assertFalse((self.folder / "nothere.vcf").exists())

    def test_errors_are_broken_at_words_on_a_terminal_and_one_line_elsewhere(self):
        words = ["fix", "--apply", "blank-name=use-default-string"]
        told = self.run_host(*words, code=2).err
        self.assertEqual(1, told.count("\n"))
        self.assertLess(100, len(told))
        for width in (60, 80):
            shown = self.run_on_terminal(*words, width=width, both=True, code=2).out
            lines = shown.splitlines()
            self.assertLess(1, len(lines))
            self.assertEqual([], [line for line in lines if len(line) > width])
            self.assertEqual(told.split(), shown.split())
            self.assertEqual([], [line for line in lines[1:] if not line.startswith("  ")])
        short = self.run_on_terminal("show", "nothere.vcf", both=True, code=2).out
        self.assertEqual(1, short.count("\n"))

    def test_a_full_disk_is_reported(self):
        book = self.write("a.vcf", BOOK * 2000)
        for words in (["scan", *NAMES, book], ["scan", *NAMES, "--json", book], ["scan", *NAMES, "--events", book],
                      ["convert", book, "--to", "-"], ["export", book, "--to", "-"], ["properties", "--json"], ["--version"],
                      ["--help"], ["issues"], ["settings", "export"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([host.PROGRAM, *map(os.fspath, words)], stdout=full, stderr=subprocess.PIPE,
                                      env=self.environment(), timeout=host.TIMEOUT)
            self.assertEqual(2, done.returncode, words)
            self.assertRegex(done.stderr.decode(), r"^krcontacts: cannot write the result: No space left on device\n$")

    def test_a_reader_that_goes_away_ends_it_quietly(self):
        book = self.write("a.vcf", BOOK * 20000)
        for words in (["scan", *NAMES, "--verbose", book], ["scan", *NAMES, "--json", book],
                      ["scan", *NAMES, "--events", book]):
            process = subprocess.Popen([host.PROGRAM, *map(os.fspath, words)], stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, env=self.environment())
            process.stdout.read(10)
            process.stdout.close()
            self.assertEqual(b"", process.stderr.read(), words)
            process.stderr.close()
            self.assertEqual(-signal.SIGPIPE, process.wait(timeout=host.TIMEOUT))

    def interrupted(self, process):
        """Sends the interrupt of Ctrl-C; what standard error said."""
        process.send_signal(signal.SIGINT)
        said = process.communicate(timeout=host.TIMEOUT)[1].decode()
        self.assertEqual(130, process.returncode)
        return said

    def test_an_interrupt_while_loading_ends_it_with_one_line(self):
        process = subprocess.Popen([host.PROGRAM, "scan", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, env=self.environment())
        # More than a pipe holds: when it is written, the program is reading, and it waits for more.
        process.stdin.write(BOOK.encode() * 4000)
        process.stdin.flush()
        self.assertEqual("krcontacts: interrupted\n", self.interrupted(process))

    def test_an_interrupt_while_scanning_ends_it_with_one_line(self):
        book = self.write("a.vcf", BOOK * 20000)
        process = subprocess.Popen([host.PROGRAM, "scan", "--events", "--all-issues", os.fspath(book)],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment())
        # The first events are out, and far more follow than the pipe holds: the run stands still in the middle.
        self.assertIn(b"start", process.stdout.read(100))
        process.send_signal(signal.SIGINT)
        said = process.communicate(timeout=host.TIMEOUT)[1].decode()
        self.assertEqual(130, process.returncode)
        self.assertEqual("krcontacts: interrupted\n", said.splitlines(keepends=True)[-1])
        self.assertEqual(1, said.count("interrupted"))

    def test_an_interrupt_works_where_the_starter_ignores_it(self):
        process = subprocess.Popen([host.PROGRAM, "scan", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, env=self.environment(),
                                   preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
        process.stdin.write(BOOK.encode() * 4000)
        process.stdin.flush()
        self.assertEqual("krcontacts: interrupted\n", self.interrupted(process))

    def test_an_interrupt_takes_the_progress_bar_away(self):
        told = {}
        try:
            main, side = pty.openpty()
        except OSError:  # a root without terminals: the program is told that there is one
            main, side = os.pipe()
            told = {"KRCONTACTS_TERMINAL": "all"}
        process = subprocess.Popen([host.PROGRAM, "scan", "-"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                   stderr=side, env=self.environment(**told))
        os.close(side)
        seen = b""
        while b"Reading standard input" not in seen:
            seen += os.read(main, 1000)
        process.send_signal(signal.SIGINT)
        self.assertEqual(130, process.wait(timeout=host.TIMEOUT))
        process.stdin.close()
        while not seen.endswith((b"interrupted\r\n", b"interrupted\n")):
            seen += os.read(main, 1000)
        os.close(main)
        # A terminal puts a carriage return before the line feed.
        self.assertTrue(seen.replace(b"\r\n", b"\n").endswith(b"\r\x1b[Kkrcontacts: interrupted\n"), seen)

    def test_no_file_appears_outside_its_home(self):
        book = self.write("books/a.vcf", BOOK)
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        for words in (["scan", book], ["issues", "drop", "blank-name"], ["settings", "add", "prefixes", "Dr."]):
            self.run_host(*words, cwd=elsewhere, HOME=str(elsewhere), XDG_CONFIG_HOME=str(elsewhere / "c"),
                          XDG_DATA_HOME=str(elsewhere / "d"))
        self.assertEqual([], list(elsewhere.iterdir()))
        self.assertEqual(["a.vcf"], [each.name for each in (self.folder / "books").iterdir()])
        self.assertTrue(self.stored_files())

    def test_messages_escape_what_could_steer_the_terminal(self):
        result = self.run_host("scan", "\x1b]0;owned\x07.vcf", code=2)
        self.assertNotIn("\x1b", result.err)
        self.assertIn(r"\x1B]0;owned\x07.vcf", result.err)

    def test_names_that_are_no_text_are_told_too(self):
        for name in (b"\xff\xfe.vcf", b"cut\xe4\xb8.vcf", b"end\xf0\x9f"):
            self.assertIn("\ufffd", self.run_host("scan", name, code=2).err)
            (self.folder / os.fsdecode(name)).with_suffix(".vcf").write_text(BOOK)
        document = self.run_host("scan", "--json", *NAMES, b"cut\xe4\xb8.vcf").json()
        self.assertEqual("cut\ufffd.vcf", document["addressBook"]["name"])
        for words in (["scan", "--issues", b"\xf0"], ["issues", "use", b"\xe4\xb8"], ["settings", "set", b"\xf0", "x"],
                      ["settings", "remove", "prefixes", b"x\xf0"], [b"\xf0"]):
            self.assertIn("\ufffd", self.run_host(*words, *(["a.vcf"] if words[0] == "scan" else []), code=2).err)


if __name__ == "__main__":
    host.main()
