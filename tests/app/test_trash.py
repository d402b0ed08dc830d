#!/usr/bin/env python3
"""The trash: what is in it, how it goes back into its book and groups, and how it is removed for ever."""
import os
import plistlib
import sqlite3

import host

ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL:1", "X-KEPT:yes", "UID:ann")
BOB = host.card("N:;Bob;;;", "FN:Bob", "TEL:2", "UID:bob")
GROUP = host.card("N:Friends;;;;", "FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:ann",
                  "UID:friends")


class Trash(host.HostTest):
    def setUp(self):
        super().setUp()
        self.run_host("books", "add", "--new", "Family")
        self.put(ANN + BOB + GROUP)

    def put(self, content, book="Family"):
        self.run_host("import", self.write("in.vcf", content), "--into", book, "--existing", "update")

    def trash(self):
        """Updates of both contacts bring what they were into the trash."""
        self.put(ANN.replace("TEL:1", "TEL:11") + BOB.replace("TEL:2", "TEL:22"))

    def listed(self, *words):
        return self.run_host("trash", "list", "--json", *words).json()["persons"]

    def names(self, book="Family"):
        return [person["showName"] for person in self.run_host("show", "--json", book).json()["persons"]]

    def groups(self, book="Family"):
        return [(g["name"], g["personCount"]) for g in self.run_host("books", "show", book, "--json").json()["groups"]]

    def file(self):
        return next(self.home.rglob("trashFile.data"))

    def kept(self):
        """What is stored; of the database what it says, since its bytes change with who reads it."""
        files = {name: content for name, content in self.stored_files().items() if ".sqlite" not in name}
        with sqlite3.connect(next(self.home.rglob("contacts.sqlite"))) as database:
            return files, list(database.iterdump())

    def test_at_first_it_is_empty(self):
        self.assertEqual([], self.listed())
        self.assertIn("0 contacts", self.run_host("trash").out)
        self.assertIn("empty", self.run_host("trash", "clear", "--yes").out)
        self.assertIn("empty", self.run_host("trash", "restore", "--all").out)
        self.assertIn("empty", self.run_host("trash", "show").out)

    def test_it_lists_what_was_deleted_and_where_it_came_from(self):
        self.trash()
        family = self.run_host("books", "show", "Family", "--json").json()["id"]
        self.assertEqual([{"number": 1, "id": "ann", "showName": "Ann Barrow", "from": family, "groups": ["friends"]},
                          {"number": 2, "id": "bob", "showName": "Bob", "from": family, "groups": []}], self.listed())
        self.assertEqual(["Bob"], [person["showName"] for person in self.listed("--where", "bob")])
        self.assertRegex(self.run_host("trash").out, "1  Ann Barrow · from Family\n")

    def test_show_tells_all_of_a_contact_by_its_number_or_id(self):
        self.trash()
        for word in ("2", "bob"):
            (person,) = self.run_host("trash", "show", word, "--json").json()["persons"]
            self.assertEqual((1, "bob", "Bob"), (person["index"], person["id"], person["showName"]))
            self.assertIn("Bob", self.run_host("trash", "show", word).out)
        self.assertEqual(2, len(self.run_host("trash", "show", "--json").json()["persons"]))

    def test_restore_puts_a_contact_back_with_its_lines_and_groups(self):
        self.trash()
        result = self.run_host("trash", "restore", "ann")
        self.assertIn("Restored 1 contact to Family", result.out)
        self.assertEqual(["Ann Barrow", "Bob", "Ann Barrow"], self.names())
        self.assertEqual([("Friends", 2)], self.groups())
        self.assertEqual(["bob"], [person["id"] for person in self.listed()])
        text = self.run_host("export", "Family", "--to", "-").out
        self.assertEqual(2, text.count("X-KEPT:yes"))

    def test_restore_puts_a_contact_into_the_groups_of_a_file_or_a_folder(self):
        group = GROUP.replace("MEMBER:ann", "MEMBER:nobody")
        self.trash()
        for path, files in (("own.vcf", {"own.vcf": BOB + group}), ("own", {"own/bob.vcf": BOB, "own/g.vcf": group})):
            with self.subTest(path):
                for name, text in files.items():
                    self.write(name, text)
                self.run_host("books", "add", self.folder / path)
                self.assertEqual([("Friends", 0)], self.groups(path))
                kept = self.file().read_bytes()
                self.run_host("trash", "restore", "ann", "--into", path)
                self.file().write_bytes(kept)
                self.assertEqual([("Friends", 1)], self.groups(path))
                self.assertEqual({"Bob", "Ann Barrow"}, set(self.names(path)))
                member = "X-ADDRESSBOOKSERVER-MEMBER:"
                written = (self.folder / list(files)[-1]).read_bytes().decode()
                self.assertIn(group.replace(member + "nobody\r\n", member + "nobody\r\n" + member + "urn:uuid:ann\r\n"),
                              written)

    def test_restore_all_and_into_another_book(self):
        self.trash()
        self.run_host("books", "add", "--new", "Other")
        self.run_host("trash", "restore", "--all", "--into", "Other")
        self.assertEqual(["Ann Barrow", "Bob"], self.names("Other"))
        self.assertEqual([], self.listed())
        text = self.run_host("export", "Other", "--to", "-").out.replace("\r\n", "\n")
        self.assertEqual((ANN + BOB).replace("\r\n", "\n"), text)

    def test_a_contact_that_is_there_again_is_told_and_stays_in_the_trash(self):
        self.trash()
        self.put(ANN + BOB)
        before = self.kept()
        for words in (["1"], ["1", "--dry-run"]):
            result = self.run_host("trash", "restore", *words, code=2)
            self.assertIn("Ann Barrow is in Family", result.err)
            self.assertIn("--again", result.err)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
            self.assertEqual(before, self.kept())
        result = self.run_host("trash", "restore", "--all", "--dry-run", code=2)
        self.assertEqual(2, result.err.count("already, the same"))
        self.assertIn("Would restore 2 contacts to Family", result.out)
        self.run_host("trash", "restore", "--all", code=2)
        # The second ones, with other numbers, are back.
        self.assertEqual(["ann", "bob"], [person["id"] for person in self.listed()])
        self.assertEqual(["Ann Barrow", "Bob"] * 2, self.names())
        self.run_host("trash", "restore", "ann", "--again")
        self.assertEqual(["bob"], [person["id"] for person in self.listed()])
        self.assertEqual(["Ann Barrow", "Bob", "Ann Barrow", "Bob", "Ann Barrow"], self.names())

    def test_an_equal_contact_of_another_id_is_restored_and_told(self):
        self.run_host("books", "add", self.write("Twins.vcf", ANN + ANN.replace("UID:ann", "UID:other")))
        self.run_host("fix", "Twins.vcf", "--apply", "exact-duplicates=delete-duplicates")
        self.assertEqual(["Ann Barrow"], self.names("Twins.vcf"))
        self.assertIn("1 of them is the same in everything shown", self.run_host("trash", "restore", "1").out)
        self.assertEqual(["Ann Barrow"] * 2, self.names("Twins.vcf"))
        self.assertEqual([], self.listed())

    def test_restore_takes_the_path_of_a_book_that_is_in_no_list(self):
        self.trash()
        self.run_host("trash", "restore", "--all", "--into", self.folder / "none.vcf", code=2)
        book = self.write("own.vcf", BOB.replace("UID:bob", "UID:rob").replace("TEL:2", "TEL:3"))
        self.assertIn("Restored 2 contacts to", self.run_host("trash", "restore", "--all", "--into", book).out)
        self.assertEqual([], self.listed())
        self.assertEqual(["Bob", "Ann Barrow", "Bob"], self.names(book))

    def test_several_equal_contacts_are_told_as_several(self):
        self.run_host("books", "add", self.write("Twins.vcf", "".join(ANN.replace("ann", f"a{n}") for n in range(3))))
        self.run_host("fix", "Twins.vcf", "--apply", "exact-duplicates=delete-duplicates")
        self.assertIn("2 of them are the same in everything shown", self.run_host("trash", "restore", "--all").out)

    def test_restore_finds_the_file_or_folder_that_is_in_no_list(self):
        twin = ANN.replace("UID:ann", "UID:other")
        file = self.write("Twins.vcf", ANN + twin)
        self.write("cards/a.vcf", ANN)
        self.write("cards/b.vcf", twin)
        for book in (file, self.folder / "cards"):
            self.run_host("fix", book, "--apply", "exact-duplicates=delete-duplicates")
            self.assertEqual(["Ann Barrow"], self.names(book))
        self.assertIn("Restored 1 contact to", self.run_host("trash", "restore", "--all").out)
        for book in (file, self.folder / "cards"):
            self.assertEqual(["Ann Barrow"] * 2, self.names(book))
        self.assertEqual([], self.listed())
        self.run_host("fix", file, "--apply", "exact-duplicates=delete-duplicates")
        file.unlink()
        self.assertIn("--into BOOK", self.run_host("trash", "restore", "1", code=2).err)
        self.assertFalse(file.exists())

    def test_a_filter_that_nobody_passes_says_so(self):
        self.trash()
        self.assertIn("None of them", self.run_host("trash", "list", "--where", "nobody").out)
        self.assertNotIn("None of them", self.run_host("trash", "list", "--where", "ann").out)
        self.assertEqual([], self.listed("--where", "nobody"))

    def test_memberships_of_groups_that_are_gone_are_told(self):
        self.trash()
        self.run_host("books", "add", "--new", "Other")
        self.assertIn("1 group membership not restored", self.run_host("trash", "restore", "1", "--into", "Other").out)

    def test_a_book_that_is_gone_has_to_be_replaced(self):
        self.trash()
        self.run_host("books", "remove", "Family")
        before = self.kept()
        self.assertIn("--into", self.run_host("trash", "restore", "--all", code=2).err)
        self.assertEqual(before, self.kept())

    def test_what_could_not_be_saved_stays_in_the_trash(self):
        path = self.write("folder/own.vcf", ANN)
        self.run_host("books", "add", path)
        self.put(ANN.replace("TEL:1", "TEL:11"), "own.vcf")
        path.parent.chmod(0o500)
        self.addCleanup(path.parent.chmod, 0o700)
        if os.access(path.parent, os.W_OK):  # root may write everywhere: the book is made unreadable instead
            path.unlink()
        before = self.file().read_bytes()
        self.assertEqual("", self.run_host("trash", "restore", "1", code=2).out)
        self.assertEqual(before, self.file().read_bytes())

    def test_several_of_one_id_are_called_by_number(self):
        self.trash()
        self.put(ANN.replace("TEL:1", "TEL:111"))
        self.assertIn("number", self.run_host("trash", "restore", "ann", code=2).err)
        self.run_host("trash", "restore", "3")
        self.assertEqual(["ann", "bob"], [person["id"] for person in self.listed()])

    def test_remove_and_clear_are_for_ever(self):
        self.trash()
        self.run_host("trash", "remove", "1")
        self.assertEqual(["bob"], [person["id"] for person in self.listed()])
        self.assertIn("--yes", self.run_host("trash", "clear", code=2).err)
        for answer, left in (("n\n", 1), ("", 1), ("y\n", 0)):
            self.run_host("trash", "clear", stdin=answer.encode(), KRCONTACTS_TERMINAL="all")
            self.assertEqual(left, len(self.listed()))
        self.assertEqual(["Ann Barrow", "Bob"], self.names())
        self.trash()
        self.run_host("trash", "clear", "--yes")
        self.assertEqual([], self.listed())

    def test_a_dry_run_changes_nothing(self):
        self.trash()
        before = self.kept()
        for words in (("restore", "--all"), ("remove", "1"), ("clear",)):
            self.assertIn("Would ", self.run_host("trash", *words, "--dry-run").out)
            self.assertEqual(before, self.kept())

    def test_what_makes_no_sense_is_refused(self):
        self.trash()
        for words in (("restore",), ("remove",), ("restore", "nobody"), ("show", "7"), ("restore", "1", "--all"),
                      ("restore", "1", "--into", "Nowhere"), ("restore", "1", "--into", ""), ("restore", "1", "--into", "Trash")):
            result = self.run_host("trash", *words, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
        self.assertEqual(2, len(self.listed()))

    def test_a_damaged_trash_is_told_and_left_alone(self):
        self.trash()
        self.file().write_bytes(b"bplist00 damaged")
        for words in ((), ("clear", "--yes"), ("restore", "--all")):
            self.assertIn("damaged", self.run_host("trash", *words, code=2).err)
        self.assertEqual(b"bplist00 damaged", self.file().read_bytes())

    def test_the_file_is_a_property_list_whose_root_is_the_list(self):
        self.trash()
        archive = plistlib.loads(self.file().read_bytes())
        objects = archive["$objects"]
        root = objects[archive["$top"]["root"].data]
        self.assertEqual(2, len(root["NS.objects"]))
        self.assertIn("Array", objects[root["$class"].data]["$classname"])
        first = objects[root["NS.objects"][0].data]
        self.assertEqual("KRTempPerson", objects[first["$class"].data]["$classname"])

    def test_the_list_fits_a_terminal(self):
        self.put(host.card("N:;" + "Long " * 40 + ";;;", "UID:long"))
        self.put(host.card("N:;" + "Longer " * 40 + ";;;", "UID:long"))
        out = self.run_host("trash", COLUMNS="80").out
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80 or line.endswith(" ")])


if __name__ == "__main__":
    host.main()
