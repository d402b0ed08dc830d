#!/usr/bin/env python3
"""What a scan is given: files that are good, bad, damaged, several, or not there."""
import os
import resource
import subprocess

import host

ANN = host.card("N:;Ann;;;", "FN:Ann", "UID:ann")
BOB = host.card("N:;Bob;;;", "FN:Bob", "UID:bob")
NAMES = ("--issues", "incomplete-name")


class Input(host.HostTest):
    def names(self, *files, stdin=b"", **more):
        result = self.run_host("scan", "--json", *NAMES, *files, stdin=stdin, **more)
        return host.persons_of(result.json(), "KRIssueIncompleteName"), result

    def refused(self, *files, name, stdin=b""):
        """The one line that refuses; it names the file."""
        result = self.run_host("scan", *files, stdin=stdin, code=2)
        self.assertEqual("", result.out)
        self.assertEqual(1, result.err.count("\n"), result.err)
        self.assertTrue(result.err.startswith("krcontacts: "))
        self.assertIn(name, result.err)
        return result.err

    def test_files_that_cannot_be_used_are_named(self):
        good = self.write("good.vcf", ANN)
        self.assertIn("No such file", self.refused("missing.vcf", name="missing.vcf"))
        self.assertIn("extension", self.refused(self.write("book.txt", ANN), name="book.txt"))
        self.assertIn("extension", self.refused(self.write("book", ANN), name="book"))
        self.assertIn("no contact", self.refused(self.write("text.vcf", "Dear diary\n"), name="text.vcf"))
        # One bad file spoils the whole: a scan of less than was asked for would mislead.
        self.refused(good, "missing.vcf", name="missing.vcf")
        self.refused(good, self.write("text2.vcf", "x"), name="text2.vcf")
        self.refused("-", name="standard input", stdin=b"no cards here")

    def test_a_folder_of_files_is_a_book(self):
        self.write("people/a.vcf", ANN)
        self.assertEqual(["Ann"], self.names("people")[0])
        self.refused("people", self.write("good.vcf", ANN), name="people")

    def test_a_file_that_may_not_be_read_is_named(self):
        path = self.write("secret.vcf", ANN)
        path.chmod(0)
        if os.access(path, os.R_OK):  # root may read everything
            self.assertEqual(["Ann"], self.names(path)[0])
        else:
            self.assertIn("ermission", self.refused(path, name="secret.vcf"))

    def test_extensions_in_any_case(self):
        for name in ("a.vcf", "a.VCF", "a.vcard", "a.VCard", "with space.vcf", "ünïcode.vcf"):
            self.assertEqual(["Ann"], self.names(self.write(name, ANN))[0], name)

    def test_a_file_name_may_begin_with_a_dash(self):
        self.write("-a.vcf", ANN)
        self.assertEqual(["Ann"], self.names("--", "-a.vcf")[0])

    def test_an_empty_file_is_an_empty_book(self):
        for content in ("", "\r\n \t\n", "\ufeff"):
            document = self.run_host("scan", "--json", self.write("empty.vcf", content)).json()
            self.assertEqual(0, document["addressBook"]["personCount"])
            self.assertEqual([], document["contexts"])
        self.assertEqual(0, self.run_host("scan", "--json", "-").json()["addressBook"]["personCount"])
        self.run_host("scan", "--exit-code", self.folder / "empty.vcf")

    def test_several_files_are_one_book(self):
        first = self.write("1.vcf", ANN + BOB)
        second = self.write("2.vcf", host.card("N:;Cleo;;;", "UID:ann"))
        names, result = self.names(second, first, "-", stdin=host.card("N:;Dan;;;").encode())
        self.assertEqual(["Ann", "Bob", "Cleo", "Dan"], names)
        persons = [finding["persons"][0] for finding in result.json()["contexts"][0]["findings"]]
        self.assertEqual([1, 2, 0, 3], [person["index"] for person in persons])
        self.assertEqual(4, len({person["id"] for person in persons}))
        self.assertEqual(4, result.json()["addressBook"]["personCount"])

    def test_a_book_is_called_after_its_file(self):
        document = self.run_host("scan", "--json", self.write("family.vcf", ANN)).json()
        self.assertEqual("family.vcf", document["addressBook"]["name"])
        self.assertTrue(document["addressBook"]["id"])

    def test_standard_input(self):
        self.assertEqual(["Ann", "Bob"], self.names("-", stdin=(ANN + BOB).encode())[0])

    def test_damaged_cards_are_counted_and_the_good_ones_read(self):
        damaged = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Cut;;;\r\n"
        path = self.write("a.vcf", ANN + damaged + BOB)
        names, result = self.names(path)
        self.assertIn("Ann", names)
        self.assertIn("Bob", names)
        self.assertIn("a.vcf", result.err)
        self.assertEqual(1, result.err.count("\n"), result.err)
        told = self.names("--verbose", path)[1].err
        self.assertRegex(told, r"a\.vcf:7: .+")
        self.assertGreater(told.count("\n"), result.err.count("\n"))

    def test_a_book_of_damaged_cards_only_is_told_so(self):
        result = self.run_host("scan", self.write("a.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\n"), code=2)
        self.assertIn("a.vcf", result.err)

    def test_good_files_give_no_message(self):
        self.assertEqual("", self.names(self.write("a.vcf", ANN))[1].err)

    def test_hostile_bytes_never_stop_it(self):
        for content, code in ((b"\x00" * 1000, 0), (bytes(range(256)) * 10, 2), (b"BEGIN:VCARD" * 1000, 2),
                              (b"BEGIN:VCARD\n" * 1000, 2), (b":" * 5000, 2), (b"\xff\xfe", 0),
                              (ANN.encode().replace(b"Ann", b"\xff\xfe\xfd"), 0), (ANN.encode("utf-16"), 0)):
            done = self.run_host("scan", "--json", self.write("a.vcf", content), code=code)
            self.assertEqual(code == 0, done.out.startswith("{"))

    def test_exit_codes(self):
        found = self.write("found.vcf", ANN)
        clean = self.write("clean.vcf", host.card("N:Doe;Ann;;;", "NOTE:x"))
        for form in ([], ["--json"], ["--events"]):
            self.run_host("scan", *NAMES, *form, found)
            self.run_host("scan", *NAMES, *form, "--exit-code", found, code=1)
            self.run_host("scan", *NAMES, *form, "--exit-code", clean)

    def test_issues_are_chosen_by_any_name_and_scanned_in_catalogue_order(self):
        path = self.write("a.vcf", ANN)
        for words in (["--issues", "empty-note,KRIssueBlankName, Duplicate Info"],
                      ["--issues", "KRIssueDuplicateInfo", "--issues", "blank-name", "--issues=note-with-spacing-only"]):
            document = self.run_host("scan", "--json", *words, path).json()
            names = ["Duplicate Info", "KRIssueBlankName", "KRIssueNoteWithSpacingOnly"]
            self.assertEqual([name for name in names if name in document["issues"]], document["issues"])
            self.assertEqual(names[1:], document["issues"][-2:])

    def test_an_unknown_issue_is_refused_with_the_list_before_anything_is_read(self):
        for word in ("blank", "KRIssueNicknameWithSpacingOnly", ""):
            result = self.run_host("scan", "--issues", word, "missing.vcf", code=2)
            self.assertIn("incomplete-name, blank-name, ", result.err)
            self.assertNotIn("missing.vcf", result.err)

    def test_chosen_issues_without_a_detector_are_named_in_one_line(self):
        rows = self.run_host("issues", "--json").json()["issues"]
        result = self.run_host("scan", "--json", "--all-issues", self.write("a.vcf", ANN))
        missing = [row["shortName"] for row in rows if row["issue"] not in result.json()["issues"]]
        line = "krcontacts: not scanned for, since there is no detector yet: " + ", ".join(missing) + "\n"
        self.assertEqual(line if missing else "", result.err)

    def test_choosing_issues_for_a_scan_changes_nothing_stored(self):
        path = self.write("a.vcf", ANN)
        for words in (NAMES, ("--all-issues",)):
            self.run_host("scan", *words, path)
            self.assertEqual({}, self.stored_files())
        self.run_host("issues", "drop", "blank-name")
        self.run_host("settings", "add", "prefixes", "Frau")
        before = self.stored_files()
        self.assertTrue(before)
        for words in (NAMES, ("--all-issues",)):
            self.run_host("scan", *words, path)
            self.assertEqual(before, self.stored_files())

    @staticmethod
    def reserves_addresses():
        """Whether the program is watched by a checker that takes more addresses for itself than any limit leaves."""
        return b"__asan_init" in host.PROGRAM.read_bytes()

    def test_too_little_memory_is_told_in_one_line(self):
        cards = "".join(host.card(f"N:L{number};A;;;", f"FN:A L{number}") for number in range(60_000))
        path = self.write("many.vcf", cards)
        codes = set()
        for megabytes in range(64, 200, 8) if not self.reserves_addresses() else ():
            limit = megabytes << 20
            done = subprocess.run([host.PROGRAM, "scan", path], env=self.environment(), capture_output=True, timeout=host.TIMEOUT,
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
            codes.add(done.returncode)
            if done.returncode != 0:
                self.assertEqual((2, b"krcontacts: there is not enough memory\n"), (done.returncode, done.stderr), megabytes)
        self.assertIn(codes, ({0, 2}, set()))

    def test_files_are_not_changed(self):
        path = self.write("a.vcf", ANN + BOB)
        before = (path.read_bytes(), path.stat().st_mtime_ns)
        self.run_host("scan", path)
        self.assertEqual(before, (path.read_bytes(), path.stat().st_mtime_ns))


if __name__ == "__main__":
    host.main()
