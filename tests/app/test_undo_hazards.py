#!/usr/bin/env python3
"""What undo does where something stands in its way: pipes, files that are too large or read-only, links, a run at once."""
import fcntl
import os
import stat

import host

ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL:1", "UID:ann")
CIM = host.card("N:;Cim;;;", "FN:Cim", "UID:cim")
TWINS = [ANN.replace("UID:ann", f"UID:{uid}") for uid in ("one", "two")]
DELETE = ("--apply", "exact-duplicates=delete-duplicates")


class Hazards(host.HostTest):
    def put(self, content, book):
        self.run_host("import", self.write("in.vcf", content), "--into", book.name)

    def file_book(self):
        book = self.write("friends.vcf", ANN)
        self.run_host("books", "add", book)
        return book

    def folder_book(self):
        for name, content in zip("ab", TWINS):
            self.write(f"cards/{name}.vcf", content)
        self.run_host("books", "add", self.folder / "cards")
        return self.folder / "cards"

    def record(self):
        return sorted((self.home / "data/krcontacts/undo").iterdir())[-1]

    def refused(self, *said):
        err = self.run_host("undo", code=2).err
        self.assertEqual(1, err.count("\n"), err)
        for each in said:
            self.assertIn(each, err)

    def test_a_pipe_or_a_device_in_a_record_is_refused(self):
        book = self.file_book()
        self.put(CIM, book)
        after = book.read_bytes()
        for path in sorted(self.record().iterdir()):
            content = path.read_bytes()
            for make in (os.mkfifo, lambda place: os.symlink("/dev/zero", place)):
                path.unlink()
                make(path)
                self.refused(str(path))
                self.assertEqual(after, book.read_bytes())
            path.unlink()
            path.write_bytes(content)
        self.run_host("undo")
        self.assertEqual(ANN.encode(), book.read_bytes())

    def test_a_pipe_in_the_place_of_the_book_is_refused(self):
        book = self.file_book()
        self.put(CIM, book)
        book.unlink()
        os.mkfifo(book)
        self.refused(str(book), "no regular file")
        self.assertTrue(stat.S_ISFIFO(book.stat().st_mode))

    def test_a_file_of_a_record_that_fits_into_no_memory_is_refused(self):
        book = self.file_book()
        self.put(CIM, book)
        kept = self.record() / "1.0"
        self.assertTrue(kept.exists())
        kept.unlink()
        kept.touch()
        os.truncate(kept, os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGESIZE") + 1)
        self.refused(str(kept), "File too large")

    def test_a_file_that_was_made_read_only_since_is_left_as_it_is(self):
        book = self.file_book()
        self.put(CIM, book)
        after = book.read_bytes()
        book.chmod(0o440)
        self.refused(f"{book}: the file is read-only; it is left as it is")
        self.assertEqual((after, 0o440), (book.read_bytes(), stat.S_IMODE(book.stat().st_mode)))
        book.chmod(0o640)
        self.run_host("undo")
        self.assertEqual((ANN.encode(), 0o640), (book.read_bytes(), stat.S_IMODE(book.stat().st_mode)))

    def test_one_read_only_file_of_a_folder_keeps_the_others_from_being_put_back(self):
        book = self.folder_book()
        self.run_host("fix", book, *DELETE)
        self.put(CIM, book)
        self.run_host("undo")
        self.put(CIM, book)
        new = next(path for path in book.iterdir() if b"Cim" in path.read_bytes())
        new.chmod(0o400)
        self.refused(f"{new}: the file is read-only")
        self.assertTrue(new.exists())

    def linked_book(self):
        """A folder of which one card is a link, and both cards of twins; the link."""
        real = self.write("elsewhere/real.vcf", TWINS[1])
        book = self.folder / "cards"
        self.write("cards/a.vcf", TWINS[0])
        link = book / "b.vcf"
        link.symlink_to("../elsewhere/real.vcf")
        self.run_host("books", "add", book)
        self.run_host("fix", book, *DELETE)
        self.assertFalse(link.is_symlink())
        self.assertEqual(TWINS[1], real.read_bytes().decode())
        return link, real

    def test_a_link_that_was_removed_comes_back_as_the_link(self):
        link, real = self.linked_book()
        self.run_host("undo")
        self.assertEqual("../elsewhere/real.vcf", os.readlink(link))
        self.run_host("undo")
        self.assertFalse(os.path.lexists(link))
        self.assertEqual(TWINS[1], real.read_bytes().decode())
        self.run_host("undo")
        self.assertEqual("../elsewhere/real.vcf", os.readlink(link))

    def test_a_link_comes_back_as_the_link_when_what_it_leads_to_was_removed_too(self):
        book = self.folder / "cards"
        self.write("cards/a.vcf", TWINS[0])
        real = self.write("cards/z.vcf", TWINS[1])
        link = book / "l.vcf"
        link.symlink_to("z.vcf")
        self.run_host("fix", book, *DELETE)
        self.assertFalse(os.path.lexists(link))
        self.assertFalse(real.exists())
        self.run_host("undo")
        self.assertEqual("z.vcf", os.readlink(link))
        self.assertEqual(TWINS[1], real.read_bytes().decode())

    def test_a_link_to_what_is_another_file_by_now_comes_back_as_the_file_it_was(self):
        link, real = self.linked_book()
        with open(real, "w", encoding="utf-8", newline="") as file:
            file.write(CIM)
        self.run_host("undo")
        self.assertFalse(link.is_symlink())
        self.assertEqual(TWINS[1], link.read_bytes().decode())
        self.assertEqual(CIM, real.read_bytes().decode())

    def waits(self, process, lock):
        """Whether the process waits for the lock, at last; it does not when it ends."""
        number = str(lock.stat().st_ino)
        while process.poll() is None:
            with open("/proc/locks", encoding="ascii") as locks:
                for words in (line.split() for line in locks):
                    if words[1] == "->" and words[5] == str(process.pid) and words[6].endswith(":" + number):
                        return True
        return False

    def test_a_run_writes_nothing_before_its_turn(self):
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.write("in.vcf", "".join(TWINS)), "--into", "Family", "--existing", "both")
        self.run_host("issues")
        lock = self.home / "data/krcontacts/undo.lock"
        lock.touch()
        for book in ("Family", self.write("file.vcf", "".join(TWINS)), self.folder_book()):
            with self.subTest(book), open(lock, encoding="ascii") as turn:
                fcntl.flock(turn, fcntl.LOCK_EX)
                before = self.run_host("show", "--json", book).out, self.run_host("trash", "--json").out
                process = self.start_host("fix", book, *DELETE)
                if not self.waits(process, lock):
                    self.fail(f"it ended before its turn: {process.communicate()}")
                self.assertEqual(before,
                                 (self.run_host("show", "--json", book).out, self.run_host("trash", "--json").out))
                fcntl.flock(turn, fcntl.LOCK_UN)
                self.assertEqual((b"", 0), (process.communicate(timeout=host.TIMEOUT)[1], process.returncode))
                self.assertEqual(1, len(self.run_host("show", "--json", book).json()["persons"]))


if __name__ == "__main__":
    host.main()
