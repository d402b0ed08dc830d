#!/usr/bin/env python3
"""Files written as other vCard files: byte for byte without a version, and with one as the same contacts."""
import stat

import host
import random_book

DATA = host.ROOT / "tests/data/vcard"
EXAMPLE = host.ROOT / "examples/address-book.vcf"
ANN = host.card("N:Barrow;Ann;;Dr;", "FN:Dr Ann Barrow", "TEL;TYPE=CELL:+44 7700 900123", "BDAY:1990-03-02",
                r"NOTE:Likes tea\, and\nscones", "UID:ann")
BOB = host.card("N:;Bob;;;", "FN:Bob", "item1.TEL:5", "item1.X-ABLabel:Boat", "UID:bob")
GROUP = host.card("N:Friends;;;;", "FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:ann",
                  "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:bob", "UID:friends")
VERSIONS = ("2.1", "3.0", "4.0")


class Convert(host.HostTest):
    def convert(self, source, *arguments, to="out.vcf", **more):
        self.result = self.run_host("convert", source, "--to", to, *arguments, **more)
        return (self.folder / to).read_bytes()

    def persons(self, path):
        return self.run_host("show", "--json", path).json()["persons"]

    def refused(self, *arguments, reason, name):
        before = {path: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}
        result = self.run_host("convert", *arguments, code=2)
        self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
        self.assertIn(reason, result.err)
        self.assertIn(name, result.err)
        self.assertEqual(before, {path: path.read_bytes() for path in self.folder.iterdir() if path.is_file()})

    def test_without_a_version_every_byte_is_copied(self):
        sources = [*DATA.glob("*.vcf"), EXAMPLE]
        self.assertGreater(len(sources), 4)
        for number, path in enumerate(sources):
            self.assertEqual(path.read_bytes(), self.convert(path, to=f"{number}.vcf"), path)
        odd = b"\xef\xbb\xbfjunk\r\n" + ANN.encode() + b"\n\n \xff\n" + GROUP.encode() + b"BEGIN:VCARD\nFN:cut off"
        self.assertEqual(odd, self.convert(self.write("odd.vcf", odd)))
        wide = (ANN + BOB).encode("utf-16")
        self.assertEqual(wide, self.convert(self.write("wide.vcf", wide), to="wide2.vcf"))

    def test_a_version_gives_the_same_contacts(self):
        book = self.write("random.vcf", random_book.book(300, 3)[0])
        for source in (*DATA.glob("*.vcf"), EXAMPLE, book):
            expected = self.persons(source)
            for version in VERSIONS:
                text = self.convert(source, "--version", version, to=f"{source.stem}-{version}.vcf").decode()
                self.assertEqual(len(expected), text.count(f"VERSION:{version}\r\n") - text.upper().count("KIND:GROUP"))
                self.assertEqual(expected, self.persons(self.folder / f"{source.stem}-{version}.vcf"), (source, version))
                self.assertNotIn("cannot hold", self.result.err)

    def test_contacts_without_an_identifier_keep_the_one_that_they_are_shown_with(self):
        twice = self.write("twice.vcf", host.card("N:;Cleo;;;") * 2 + ANN)
        self.convert(twice, "--version", "3.0")
        self.assertEqual([person["id"] for person in self.persons(twice)],
                         [person["id"] for person in self.persons(self.folder / "out.vcf")])

    def test_group_cards_are_carried_along(self):
        source = self.write("a.vcf", GROUP + ANN + BOB)
        for version in VERSIONS:
            text = self.convert(source, "--version", version, to=f"{version}.vcf").decode()
            prefix = "" if version == "4.0" else "X-ADDRESSBOOKSERVER-"
            group = text[text.index("FN:Friends"):]
            self.assertIn(f"\r\n{prefix}KIND:group\r\n", group)
            self.assertIn(f"\r\n{prefix}MEMBER:urn:uuid:ann\r\n{prefix}MEMBER:urn:uuid:bob\r\n", group)
            self.assertRegex(group, r"\r\nUID(;VALUE=text)?:friends\r\n")
            self.assertEqual(3, text.count("BEGIN:VCARD\r\n"))
            self.assertIn(f"2 contacts and 1 group to {version}.vcf", self.result.out)
            # And back: nothing is there twice.
            again = self.convert(f"{version}.vcf", "--version", version, to=f"{version}-again.vcf").decode()
            self.assertEqual(text, again)

    def test_it_says_what_it_wrote_and_where(self):
        source = self.write("a.vcf", ANN + BOB)
        size = len(self.convert(source))
        self.assertEqual(f"Wrote 2 contacts to out.vcf: {size} bytes, copied as they are\n", self.result.out)
        size = len(self.convert(source, "--version", "4.0", to="four.vcf"))
        self.assertEqual(f"Wrote 2 contacts to four.vcf: {size} bytes, vCard 4.0\n", self.result.out)

    def test_a_file_that_is_there_is_replaced_only_when_told_so(self):
        source = self.write("a.vcf", ANN)
        self.write("out.vcf", "precious")
        self.refused(source, "--to", "out.vcf", reason="--force", name="out.vcf")
        self.refused(source, "--to", "out.vcf", "--dry-run", reason="--force", name="out.vcf")
        self.refused(source, "--to", source, reason="--force", name="a.vcf")
        (self.folder / "out.vcf").chmod(0o640)
        self.assertEqual(ANN.encode(), self.convert(source, "--force"))
        self.assertEqual(0o640, stat.S_IMODE((self.folder / "out.vcf").stat().st_mode))
        self.assertIn(b"VERSION:4.0", self.convert(source, "--force", "--version", "4.0", to="a.vcf"))

    def test_a_dry_run_writes_nothing(self):
        source = self.write("a.vcf", ANN)
        result = self.run_host("convert", source, "--to", "out.vcf", "--version", "3.0", "--dry-run")
        self.assertTrue(result.out.startswith("Would write 1 contact to out.vcf: "), result.out)
        self.assertEqual(["a.vcf"], sorted(path.name for path in self.folder.iterdir() if path.is_file()))
        self.assertEqual("", self.run_host("convert", source, "--to", "-", "--dry-run").out)

    def test_standard_input_and_output(self):
        result = self.run_host("convert", "-", "--to", "-", stdin=ANN.encode())
        self.assertEqual(ANN, result.out)
        self.assertIn("Wrote 1 contact to standard output", result.err)

    def test_what_cannot_be_used_is_named(self):
        source = self.write("a.vcf", ANN)
        (self.folder / "folder.vcf").mkdir()
        self.refused("missing.vcf", "--to", "out.vcf", reason="No such file", name="missing.vcf")
        self.refused("folder.vcf", "--to", "out.vcf", reason="Is a directory", name="folder.vcf")
        self.refused(self.write("diary.vcf", "Dear diary"), "--to", "out.vcf", reason="no contact", name="diary.vcf")
        self.refused(self.write("book.txt", ANN), "--to", "out.vcf", reason="extension", name="book.txt")
        self.refused(source, "--to", "out.txt", reason=".vcf", name="out.txt")
        self.refused(source, "--to", "folder.vcf", reason="folder", name="folder.vcf")
        self.refused(source, "--to", "nowhere/out.vcf", reason="No such file", name="nowhere/out.vcf")
        self.refused(source, "--to", "out.vcf", "--version", "3", reason="4.0", name='"3"')
        self.refused(source, reason="--to", name="--to")


if __name__ == "__main__":
    host.main()
