#!/usr/bin/env python3
"""Files put into a book, with an account of every record; and books written as files again."""
import subprocess

import host
import random_book

ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL:1", "X-KEPT:yes", "UID:ann")
BOB = host.card("N:;Bob;;;", "FN:Bob", "TEL:2", "UID:bob")
OTHER = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL:99", "UID:ann")
CUT = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:cut off\r\n"
GROUP = host.card("N:Friends;;;;", "FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group",
                  "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:ann", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:nobody", "UID:friends")
KINDS = ("added", "equal", "updated", "conflicts", "lost", "groupsAdded", "groupsKnown", "groupsRejected")


class Import(host.HostTest):
    def setUp(self):
        super().setUp()
        self.run_host("books", "add", "--new", "Family")

    def put(self, content, *words, **more):
        """Imports the text; what is said of it, without the kinds that did not occur."""
        path = content if isinstance(content, list) else [self.write("in.vcf", content)]
        summary = self.run_host("import", *path, "--into", "Family", "--json", *words, **more).json()
        self.assertEqual(summary["records"], sum(summary[kind] for kind in KINDS))
        self.rejects = summary["rejects"]
        return {kind: summary[kind] for kind in KINDS if summary[kind]}

    def persons(self, book="Family"):
        return self.run_host("show", "--json", book).json()["persons"]

    def names(self, book="Family"):
        return [person["showName"] for person in self.persons(book)]

    def exported(self, *words, to="out.vcf"):
        self.result = self.run_host("export", "Family", "--to", to, *words)
        return (self.folder / to).read_bytes().decode()

    def test_every_record_is_accounted_for(self):
        self.assertEqual({"added": 2, "lost": 1, "groupsAdded": 1}, self.put(ANN + CUT + BOB + GROUP))
        self.assertEqual(["Ann Barrow", "Bob"], self.names())
        self.assertEqual([(9, 2)], [(reject["line"], reject["card"]) for reject in self.rejects])
        groups = self.run_host("books", "show", "Family", "--json").json()["groups"]
        self.assertEqual([("friends", "Friends", 1)], [(g["id"], g["name"], g["personCount"]) for g in groups])

    def test_equal_contacts_are_skipped(self):
        self.put(ANN + BOB + GROUP)
        self.assertEqual({"equal": 2, "groupsKnown": 1}, self.put(ANN + BOB + GROUP))
        # Also when they come without an identifier, or under another one, and within one file.
        self.assertEqual({"equal": 2}, self.put(ANN.replace("UID:ann\r\n", "") + BOB.replace("UID:bob", "UID:bobby")))
        self.assertEqual({"added": 1, "equal": 1}, self.put(host.card("FN:Cleo", "N:;Cleo;;;") * 2))
        self.assertEqual(["Ann Barrow", "Bob", "Cleo"], self.names())

    def test_one_address_in_common_makes_nobody_equal(self):
        pair = "".join(host.card(f"N:;{name};;;", "EMAIL:home@example.com") for name in ("Dan", "Eve"))
        self.assertEqual({"added": 2}, self.put(pair))

    def test_other_content_of_the_same_uid_is_skipped_and_kept_with_the_rejects(self):
        self.put(ANN)
        for words in ((), ("--existing", "skip")):
            self.assertEqual({"conflicts": 1}, self.put(OTHER + CUT.replace("BEGIN", "x"), "--rejects", "rejected.vcf",
                                                        "--force", *words))
            self.assertEqual(OTHER, (self.folder / "rejected.vcf").read_bytes().decode())
        self.assertEqual((str(self.folder / "in.vcf"), 1, 1), tuple(self.rejects[0][k] for k in ("file", "line", "card")))
        self.assertIn("UID", self.rejects[0]["reason"])
        self.assertIn(b"TEL:1\r\n", self.exported().encode())

    def test_rejected_records_are_kept_byte_for_byte(self):
        for number, encoding in enumerate(("utf-8", "utf-16")):
            self.put([self.write(f"{number}.vcf", (ANN + CUT + BOB).encode(encoding))], "--rejects", f"{number}-no.vcf")
            self.assertEqual(CUT.encode(), (self.folder / f"{number}-no.vcf").read_bytes())
        self.put(["-"], "--rejects", "input-no.vcf", stdin=(ANN + CUT + BOB).encode())
        self.assertEqual(CUT.encode(), (self.folder / "input-no.vcf").read_bytes())

    def test_a_rejects_file_that_is_there_is_not_replaced(self):
        path = self.write("mine.vcf", BOB)
        result = self.run_host("import", self.write("a.vcf", ANN), "--into", "Family", "--rejects", path, code=2)
        self.assertIn("--force", result.err)
        self.assertEqual(BOB, path.read_bytes().decode())
        self.assertEqual([], self.names())

    def test_the_rejects_are_not_mixed_with_the_account(self):
        result = self.run_host("import", self.write("a.vcf", CUT), "--into", "Family", "--rejects", "-", code=2)
        self.assertIn("name a file", result.err)
        self.assertEqual("", result.out)
        self.assertFalse((self.folder / "-").exists())
        self.assertEqual([], self.names())

    def test_a_large_book_is_exported_whole(self):
        cards = [host.card(f"FN:P{number}", f"N:;P{number};;;", f"UID:p{number}", "NOTE:" + "x" * 60 + str(number))
                 for number in range(4000)]
        self.put("".join(cards))
        (self.folder / "out").mkdir()
        text = self.exported(to="out/all.vcf")
        self.assertGreater(len(text), 1 << 18)
        self.assertEqual("".join(cards), text)
        self.assertEqual(["all.vcf"], [path.name for path in (self.folder / "out").iterdir()])
        self.assertIn(f"{len(text.encode()):,}".replace(",", ""), self.result.out.replace(",", ""))

    def test_update_takes_the_new_values_and_keeps_the_former_contact_in_the_trash(self):
        self.put(ANN + BOB)
        self.assertEqual({"updated": 1, "equal": 1}, self.put(OTHER + BOB, "--existing", "update"))
        self.assertEqual(["Ann Barrow", "Bob"], self.names())
        text = self.exported()
        self.assertIn("TEL:99\r\n", text)
        self.assertIn("X-KEPT:yes\r\n", text)
        self.assertEqual(["Ann Barrow"], self.names("trash_addressbook"))

    def test_both_keeps_both(self):
        self.put(ANN)
        self.assertEqual({"added": 2}, self.put(OTHER + ANN, "--existing", "both"))
        self.assertEqual(3, len({person["id"] for person in self.persons()}))
        self.assertEqual(["Ann Barrow"] * 3, self.names())

    def test_on_a_terminal_it_asks(self):
        self.put(ANN + BOB)
        source = self.write("in.vcf", OTHER + BOB.replace("TEL:2", "TEL:22"))
        for answers, updated in (("s\nu\n", 1), ("what\nU\n", 2)):
            words = ["import", source, "--into", "Family", "--dry-run"]
            result = self.run_host(*words, stdin=answers.encode(), KRCONTACTS_TERMINAL="all")
            self.assertRegex(result.out, rf"updated.* {updated}\n")
            self.assertIn("Ann Barrow", result.err)
        self.assertIn("terminal", self.run_host(*words, "--existing", "ask", code=2).err)

    def test_a_dry_run_changes_nothing(self):
        self.put(ANN)
        before = self.exported()
        self.assertEqual({"added": 1, "updated": 1, "lost": 1},
                         self.put(OTHER + BOB + CUT, "--existing", "update", "--rejects", "no.vcf", "--dry-run"))
        self.assertFalse((self.folder / "no.vcf").exists())
        self.assertEqual(before, self.exported(to="again.vcf"))
        self.assertEqual([], self.names("trash_addressbook"))

    def test_one_bad_file_keeps_all_out(self):
        good = self.write("good.vcf", ANN)
        for bad, reason in (("missing.vcf", "No such file"), (self.write("diary.vcf", "Dear diary"), "no contact"),
                            (self.write("a.txt", ANN), "extension")):
            result = self.run_host("import", good, bad, "--into", "Family", code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
            self.assertIn(reason, result.err)
        self.assertEqual([], self.names())
        self.assertIn("no book", self.run_host("import", good, "--into", "Nowhere", code=2).err)
        self.assertIn("not written", self.run_host("import", good, "--into", "Trash", code=2).err)

    def test_the_summary_fits_a_terminal_and_says_where(self):
        out = self.run_host("import", self.write("in.vcf", ANN + CUT), "--into", "Family", COLUMNS="80").out
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80 or line.endswith(" ")])
        self.assertIn("Wrote 1 contact to Family", out)
        self.assertIn("card 2", out)

    def test_export_gives_the_cards_as_they_came(self):
        self.put(ANN + BOB + GROUP)
        text = self.exported()
        self.assertTrue(text.startswith(ANN + BOB))
        self.assertIn("KIND:group\r\n", text[len(ANN + BOB):])
        self.assertIn("2 contacts and 1 group of Family", self.result.out.replace("\n", " "))

    def test_export_and_import_give_the_same_book(self):
        self.put([self.write("random.vcf", random_book.book(200, 5)[0]), self.write("more.vcf", ANN + BOB + GROUP)])
        expected = self.persons()
        for version in ("2.1", "3.0", "4.0"):
            self.exported("--version", version, to=f"{version}.vcf")
            self.run_host("books", "add", "--new", f"Copy {version}")
            self.run_host("import", self.folder / f"{version}.vcf", "--into", f"Copy {version}", "--existing", "both")
            copied = self.persons(f"Copy {version}")
            self.assertEqual([p["values"] for p in expected], [p["values"] for p in copied], version)
            groups = self.run_host("books", "show", f"Copy {version}", "--json").json()["groups"]
            self.assertEqual([("friends", "Friends", 1)], [(g["id"], g["name"], g["personCount"]) for g in groups])

    def test_export_of_some_contacts(self):
        self.put(ANN + BOB + GROUP)
        self.assertEqual(BOB, self.exported("--where", "bob"))
        done = self.run_host("export", "Family", "--to", "-", "--id", "bob")
        self.assertEqual(BOB.replace("\r\n", "\n"), done.out.replace("\r\n", "\n"))
        self.assertIn("standard output", done.err)

    def test_export_replaces_nothing_unasked(self):
        self.put(ANN)
        path = self.write("mine.vcf", BOB)
        self.assertIn("--force", self.run_host("export", "Family", "--to", path, code=2).err)
        self.run_host("export", "Family", "--to", path, "--force", "--dry-run")
        self.assertEqual(BOB, path.read_bytes().decode())
        self.run_host("export", "Family", "--to", path, "--force")
        self.assertEqual(ANN, path.read_bytes().decode())
        self.run_host("export", "Family", "--to", "book.txt", code=2)
        self.run_host("export", "Family", "--to", "b.vcf", "--version", "5.0", code=2)

    def test_a_file_that_is_a_book_takes_contacts_too(self):
        path = self.write("own.vcf", ANN)
        self.run_host("books", "add", path)
        self.run_host("import", self.write("in.vcf", BOB), "--into", "own.vcf")
        self.assertEqual((ANN + BOB).encode(), path.read_bytes())

    def test_two_imports_at_once_lose_nothing_that_was_told_as_written(self):
        for place in ("own.vcf", "folder/seed.vcf"):
            path = self.write(place, ANN)
            book = path if place == "own.vcf" else path.parent
            self.run_host("books", "add", book)
            files = [self.write(f"{letter}.vcf", "".join(host.card(f"N:;{letter}{i};;;", f"UID:{letter}{i}")
                                                         for i in range(50))) for letter in "abc"]
            for _ in range(4):
                path.write_bytes(ANN.encode())
                before = {person["id"] for person in self.persons(book)}
                running = [self.start_host("import", file, "--into", book.name, "--no-progress") for file in files]
                for process, letter in zip(running, "abc"):
                    err = process.communicate()[1].decode()
                    if process.returncode == 0:
                        before |= {f"{letter}{i}" for i in range(50)}
                    else:
                        self.assertIn("by another program", err)
                self.assertEqual(before, {person["id"] for person in self.persons(book)})

    def test_a_damaged_trash_is_put_aside_and_that_is_told(self):
        self.put(ANN)
        trash = self.home / "data" / "krcontacts" / "trashFile.data"
        trash.write_bytes(b"damaged")
        words = ("import", self.write("other.vcf", OTHER), "--into", "Family", "--existing", "update")
        self.assertNotIn("aside", self.run_host(*words, "--dry-run").err)
        self.assertIn("aside", self.run_host(*words).err)
        self.assertEqual([b"damaged"], [path.read_bytes() for path in trash.parent.glob("trashFile.data.damaged-*")])

    def test_what_is_read_or_written_to_is_not_overwritten(self):
        path = self.write("own.vcf", ANN + BOB)
        (self.folder / "link.vcf").symlink_to(path)
        self.run_host("books", "add", path)
        other = self.write("other.vcf", OTHER)
        for words in (("import", other, "--into", "own.vcf", "--rejects", path),
                      ("import", other, "--into", "own.vcf", "--rejects", other),
                      ("export", "own.vcf", "--id", "ann", "--to", "link.vcf"),
                      ("export", path.name, "--id", "ann", "--to", path),
                      ("export", self.folder, "--id", "ann", "--to", path)):
            self.assertIn("another", self.run_host(*words, "--force", code=2).err)
            self.assertEqual((ANN + BOB).encode(), path.read_bytes())
            self.assertEqual(OTHER.encode(), other.read_bytes())

    def test_a_disk_that_takes_no_more_is_told_and_leaves_nothing_behind(self):
        path = self.write("own.vcf", ANN)
        self.run_host("books", "add", path)
        many = self.write("many.vcf", "".join(host.card(f"N:;{i};;;", "NOTE:" + "x" * 500) for i in range(1000)))
        there = sorted(self.folder.iterdir())
        for book in ("own.vcf", "Family"):
            done = subprocess.run(["sh", "-c", 'ulimit -f 100; exec "$@"', "sh", host.PROGRAM, "import", many, "--into",
                                   book], cwd=self.folder, env=self.environment(), capture_output=True)
            self.assertEqual((2, b""), (done.returncode, done.stdout))
            self.assertIn(b"nothing is imported: ", done.stderr)
        self.assertEqual(there, sorted(self.folder.iterdir()))
        self.assertEqual(ANN.encode(), path.read_bytes())
        self.assertEqual([], self.persons())

    def test_cards_of_groups_go_into_a_file_and_a_folder(self):
        self.write("own.vcf", ANN)
        self.write("own/ann.vcf", ANN)
        for path in ("own.vcf", "own"):
            with self.subTest(path):
                self.run_host("books", "add", self.folder / path)
                for kinds in ({"added": 1, "groupsAdded": 1}, {"equal": 1, "groupsKnown": 1}):
                    summary = self.run_host("import", self.write("in.vcf", BOB + GROUP), "--into", path, "--json").json()
                    self.assertEqual(kinds, {kind: summary[kind] for kind in KINDS if summary[kind]})
                groups = self.run_host("books", "show", path, "--json").json()["groups"]
                self.assertEqual([("friends", "Friends", 1)], [(g["id"], g["name"], g["personCount"]) for g in groups])
        text = (self.folder / "own.vcf").read_bytes().decode()
        self.assertTrue(text.startswith(ANN + BOB + "BEGIN:VCARD\r\n"), text)
        self.assertEqual(["ann.vcf", "bob.vcf", "friends.vcf"], sorted(p.name for p in (self.folder / "own").iterdir()))

    def test_rejects_that_cannot_be_kept_stop_the_import(self):
        self.put(ANN)
        source = self.write("in.vcf", OTHER + host.card("N:;New;;;"))
        result = self.run_host("import", source, "--into", "Family", "--rejects", "nowhere/no.vcf", code=2)
        self.assertIn("nothing is imported", result.err)
        self.assertEqual(["Ann Barrow"], self.names())


if __name__ == "__main__":
    host.main()
