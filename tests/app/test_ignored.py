#!/usr/bin/env python3
"""Ignored findings: remembered with their book, left out of scans, listed, forgotten, and known again after an import."""
import json
import resource
import stat
import subprocess

import host
import schema

FIX = json.loads((host.ROOT / "docs/fix.schema.json").read_text(encoding="utf-8"))
SCAN = json.loads((host.ROOT / "docs/scan.schema.json").read_text(encoding="utf-8"))


def namesake(phone, uid, *more):
    return host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", f"TEL:{phone}", *more, f"UID:{uid}")


TITLED = host.card("N:Weiss;Anja;;Dipl.-Ing.;", "FN:Anja Weiss", "TEL:9", "UID:weiss")


class Ignored(host.HostTest):
    def setUp(self):
        super().setUp()
        self.book = self.write("book.vcf", namesake(1, "a") + namesake(2, "b") + TITLED)

    def ignore(self, *words, issue="duplicate-names", **more):
        return self.run_host("fix", self.book, "--apply", f"{issue}=ignore", "--remember", *words, **more)

    def scan(self, *words, book=None):
        document = self.run_host("scan", "--json", "--hide-ignored", book or self.book, *words).json()
        schema.check(document, SCAN, SCAN)
        # Contacts without a note are found too, and are not what this is about.
        found = sorted({context["issue"] for context in document["contexts"]} - {"KRIssueNoteWithSpacingOnly"})
        return found, document["hidden"]

    def listed(self, book=None):
        return self.run_host("ignored", "list", book or self.book, "--json").json()["ignored"]

    def file(self):
        (path,) = self.home.rglob("ignored/*.txt")
        return path

    def test_what_is_remembered_is_hidden_and_counted(self):
        self.assertEqual((["KRIssueDuplicateNames", "KRIssueUnusualTitle"], 0), self.scan())
        before = self.book.read_bytes()
        self.assertIn("1 ignored finding remembered", self.ignore().out)
        self.assertEqual(before, self.book.read_bytes())
        self.assertEqual((["KRIssueUnusualTitle"], 1), self.scan())
        self.assertIn("1 ignored finding is not shown", self.run_host("scan", self.book, "--hide-ignored").out)
        self.assertIn("0 ignored findings are not", self.run_host("scan", self.book, "--hide-ignored", "--id", "weiss").out)
        self.assertEqual(3, len(self.run_host("scan", "--json", self.book).json()["contexts"]))
        lines = self.run_host("scan", "--events", "--hide-ignored", self.book).out.splitlines()
        self.assertEqual(1, json.loads(lines[-1])["result"]["hidden"])
        self.assertEqual(0o600, stat.S_IMODE(self.file().stat().st_mode))

    def test_without_remember_nothing_is_remembered(self):
        self.run_host("fix", self.book, "--apply", "duplicate-names=ignore")
        self.assertEqual([], self.listed())
        self.assertIn("would be remembered", self.ignore("--dry-run").out)
        self.assertEqual([], list(self.home.rglob("ignored")))

    def test_the_document_of_fix_tells_how_many_are_new(self):
        for expected in (1, 0):
            document = self.ignore("--json").json()
            schema.check(document, FIX, FIX)
            self.assertEqual(expected, document["remembered"])
        self.assertEqual(1, len(self.listed()))

    def test_where_there_is_nothing_to_remember_that_is_said(self):
        out = self.ignore(issue="blank-name").out
        self.assertIn("There is no finding to remember.", out)
        self.assertNotIn("remembered", out)
        self.assertEqual([], list(self.home.rglob("ignored")))
        self.ignore()
        for words in ((), ("--dry-run",)):
            self.assertIn("Every ignored finding was remembered before", self.ignore(*words).out)
        self.assertEqual(1, len(self.listed()))

    def test_they_outlive_another_identifier_order_and_place(self):
        self.ignore()
        self.book.write_text(TITLED + namesake(2, "x", "NOTE:new") + namesake(1, "y"))
        self.assertEqual((["KRIssueUnusualTitle"], 1), self.scan())

    def test_they_come_up_again_when_what_concerns_them_changes(self):
        self.ignore()
        for cards in ((namesake(1, "a"), namesake(3, "b")), (namesake(1, "a"), namesake(2, "b"), namesake(3, "c"))):
            self.book.write_text("".join(cards))
            self.assertIn("KRIssueDuplicateNames", self.scan()[0])

    def test_a_field_is_ignored_as_long_as_it_says_the_same(self):
        self.ignore(issue="unusual-title")
        self.book.write_text(TITLED.replace("TEL:9", "TEL:10"))
        self.assertEqual(([], 1), self.scan())
        self.book.write_text(TITLED.replace("Dipl.-Ing.", "Dipl.-Kfm."))
        self.assertEqual((["KRIssueUnusualTitle"], 0), self.scan())

    def test_each_book_has_its_own(self):
        self.ignore()
        other = self.write("other.vcf", self.book.read_text())
        self.assertEqual(0, self.scan(book=other)[1])
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.book, "--into", "Family")
        self.run_host("fix", "Family", "--apply", "unusual-title=ignore", "--remember")
        self.assertEqual((["KRIssueDuplicateNames"], 1), self.scan(book="Family"))
        self.assertEqual(["KRIssueUnusualTitle"], [entry["issue"] for entry in self.listed("Family")])

    def test_they_are_listed_and_forgotten(self):
        self.ignore()
        self.ignore(issue="unusual-title")
        first, second = self.listed()
        self.assertEqual(("KRIssueDuplicateNames", "Ann Barrow, Ann Barrow"), (first["issue"], first["persons"]))
        self.assertRegex(first["date"], r"^\d{4}-\d\d-\d\d$")
        out = self.run_host("ignored", "list", self.book).out
        self.assertIn("2 ignored findings", out)
        self.assertIn("2  Anja Weiss · unusual-title · since ", out)
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80])
        self.assertIn("Would forget 1 ", self.run_host("ignored", "forget", self.book, "1", "--dry-run").out)
        self.assertEqual(2, len(self.listed()))
        self.run_host("ignored", "forget", self.book, "1")
        self.assertEqual([second], self.listed())
        self.assertEqual((["KRIssueDuplicateNames"], 1), self.scan())
        self.run_host("ignored", "forget", self.book, "--all")
        self.assertEqual([], self.listed())

    def test_a_book_without_a_verb_is_listed(self):
        self.ignore()
        self.assertEqual(self.run_host("ignored", "list", self.book).out, self.run_host("ignored", self.book).out)
        self.assertEqual({"book", "ignored"}, set(self.run_host("ignored", self.book, "--json").json()))
        self.run_host("ignored", "nowhere", code=2)

    def test_without_a_book_those_of_all_books_are_listed(self):
        out = self.run_host("ignored").out
        self.assertIn("krcontacts fix --remember", out)
        self.assertEqual({"books": []}, self.run_host("ignored", "--json").json())
        self.ignore()
        self.ignore(issue="unusual-title")
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.book, "--into", "Family")
        self.run_host("fix", "Family", "--apply", "unusual-title=ignore", "--remember")
        for words in (("ignored",), ("ignored", "list")):
            out = self.run_host(*words).out
            self.assertIn("Family (sqlite:", out)
            self.assertIn("2  Anja Weiss · unusual-title", out)
        books = self.run_host("ignored", "--json").json()["books"]
        self.assertEqual([1, 2], [len(book["ignored"]) for book in books])
        self.assertEqual(self.listed(), books[1]["ignored"])

    def test_a_book_whose_file_is_gone_is_called_by_its_identifier(self):
        self.ignore()
        self.book.unlink()
        (book,) = self.run_host("ignored", "--json").json()["books"]
        self.assertIn(f"book.vcf ({book['book']}) · 1 ignored", self.run_host("ignored", COLUMNS="300").out.replace("\n  ", " "))
        self.assertEqual(book["ignored"], self.listed(book["book"]))
        self.run_host("ignored", "forget", book["book"], "1")
        self.assertEqual({"books": []}, self.run_host("ignored", "--json").json())

    def test_forget_says_what_is_missing(self):
        self.ignore()
        self.assertIn("of which book?", self.run_host("ignored", "forget", code=2).err)
        self.assertIn("BOOK and its number", self.run_host("ignored", "forget", self.book, code=2).err)
        self.assertIn("BOOK and its number", self.run_host("ignored", "forget", "1", code=2).err)

    def test_a_damaged_file_hides_no_other(self):
        self.ignore()
        self.write("other.vcf", self.book.read_text())
        self.run_host("fix", "other.vcf", "--apply", "unusual-title=ignore", "--remember")
        good = self.listed("other.vcf")
        (path,) = [path for path in self.home.rglob("ignored/*.txt") if b"other.vcf" not in path.read_bytes()]
        path.write_bytes(path.read_bytes()[:-1])
        (path.parent / "notes.txt").write_text("none of ours")
        result = self.run_host("ignored", "--json")
        self.assertEqual([good], [book["ignored"] for book in result.json()["books"]])
        self.assertIn("this is no file of ignored findings", result.err)
        self.assertEqual(1, result.err.count("\n"))

    def test_fixes_stay_when_what_is_ignored_cannot_be_remembered_and_undo_takes_them_back(self):
        self.book.write_text("".join(host.card(f"N:;P{n};;Xx;", f"UID:{n}") for n in range(500)) +
                             2 * host.card("N:Finch;Oliver;;;", "FN:Oliver Finch", "TEL:5"))
        before = self.book.read_bytes()
        # There is room for the book, and none for what is ignored.
        limit = len(before) + 5000
        failed = subprocess.run([host.PROGRAM, "fix", self.book, "--apply", "unusual-title=ignore", "--apply",
                                 "exact-duplicates=delete-duplicates", "--remember"], capture_output=True,
                                cwd=self.folder, env=self.environment(), restore_signals=False,
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual((2, b""), (failed.returncode, failed.stdout), failed.stderr)
        self.assertIn(b"the fixes are saved, but what is ignored is not remembered", failed.stderr)
        self.assertEqual(1, self.book.read_text().count("Oliver Finch"))
        self.assertEqual({"books": []}, self.run_host("ignored", "--json").json())
        self.run_host("undo")
        self.assertEqual(before, self.book.read_bytes())

    def test_what_a_killed_run_left_behind_goes_with_the_next_save(self):
        self.ignore()
        left = self.file().with_name(".krcontacts.new-a1B2c3")
        left.touch()
        self.ignore(issue="unusual-title")
        self.assertFalse(left.exists())

    def test_undo_takes_what_was_remembered_or_forgotten_back(self):
        self.ignore()
        entries = self.listed()
        self.run_host("ignored", "forget", self.book, "--all")
        self.run_host("undo")
        self.assertEqual(entries, self.listed())
        self.ignore(issue="unusual-title")
        self.run_host("undo")
        self.assertEqual(entries, self.listed())

    def test_what_makes_no_sense_is_refused(self):
        self.ignore()
        for words in (("forget", self.book), ("forget", self.book, "2"), ("forget", self.book, "0"),
                      ("forget", self.book, "x"), ("forget", self.book, "1", "--all"), ("list", "nowhere")):
            result = self.run_host("ignored", *words, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")), words)
        result = self.run_host("fix", self.book, "--apply", "duplicate-names=edit", "--remember", code=2)
        self.assertIn("ISSUE=ignore", result.err)
        self.assertEqual(1, len(self.listed()))

    def test_a_damaged_file_is_told_and_left_alone(self):
        self.ignore()
        whole = self.file().read_bytes()
        lines = whole.split(b"\n")
        for damaged in (b"", b"x", whole[:-1], whole[:-10], whole.replace(b" 1\n", b" 2\n", 1), whole.replace(b"\t", b" "),
                        whole.replace(b"book\t", b"book\tother"), b"\n".join([*lines[:2], b"A" + lines[2][1:], b""]),
                        whole + b"\n", b"\x00" * 1000, lines[0] + b"\n"):
            self.file().write_bytes(damaged)
            for words in (("ignored", "list", self.book), ("scan", self.book, "--hide-ignored"),
                          ("fix", self.book, "--apply", "unusual-title=ignore", "--remember")):
                result = self.run_host(*words, code=2)
                self.assertIn("ignored findings", result.err)
                self.assertEqual(1, result.err.count("\n"))
            self.assertEqual(damaged, self.file().read_bytes())

    def test_names_of_any_text_come_back(self):
        name = "Tab\\\\Back\tslash"
        self.book.write_text("".join(host.card(f"N:;{name};;;", f"TEL:{n}", f"UID:{n}") for n in "12"))
        self.ignore()
        self.assertEqual("Tab\\Back\tslash, Tab\\Back\tslash", self.listed()[0]["persons"])


if __name__ == "__main__":
    host.main()
