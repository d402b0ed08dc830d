#!/usr/bin/env python3
"""What a scan shows to people, on a terminal and in a pipe."""
import re
import unicodedata

import host

ESCAPE = re.compile(r"\x1b\[[0-9;]*[A-Za-z]")


def cells(line):
    """The width of a line on a terminal."""
    return sum(0 if unicodedata.combining(char) else 2 if unicodedata.east_asian_width(char) in "WF" else 1
               for char in line)


class Report(host.HostTest):
    def many(self, count):
        return self.write("many.vcf", "".join(host.card(f"N:;Ann{i:03};;;", "NOTE:x") for i in range(count)))

    def test_summary_counts_findings_and_contacts(self):
        path = self.write("a.vcf", host.card("N:;Ann;;;", "NOTE:x") + host.card("N:;Bob;;;") + host.card("N:D;Cleo;;;"))
        lines = self.run_host("scan", "--issues", "incomplete-name,empty-note,unusual-title", path).out.splitlines()
        self.assertEqual("a.vcf · 3 contacts", lines[0])
        rows = {" ".join(line.split()[:-2]): line.split()[-2:] for line in lines[2:10]}
        titles = {row["shortName"]: row["displayName"] for row in self.run_host("issues", "--json").json()["issues"]}
        self.assertEqual(["2", "2"], rows[titles["incomplete-name"]])
        self.assertEqual(["2", "2"], rows[titles["empty-note"]])
        self.assertEqual(["-", "-"], rows[titles["unusual-title"]])
        self.assertEqual(["4", "3"], rows["All together"])

    def test_findings_tell_names_sentence_and_fixes(self):
        path = self.write("a.vcf", host.card("N:Doe;Jane;;Frau;", "NOTE:x"))
        shown = self.run_host("scan", "--issues", "unusual-title", path).out
        handles = next(row["handles"] for row in self.run_host("issues", "--json").json()["issues"]
                       if row["shortName"] == "unusual-title")
        self.assertIn("1  Jane Doe\n", shown)
        self.assertIn('The prefix "Frau" of this Contact is invalid.\n', shown)
        self.assertIn("Fix: " + " · ".join(handle["title"] for handle in handles), shown)

    def test_ten_findings_unless_asked_otherwise(self):
        path = self.many(25)

        def shown(*arguments):
            out = self.run_host("scan", "--issues", "incomplete-name", *arguments, path).out
            return len(re.findall(r"Ann\d\d\d", out)), out

        count, out = shown()
        self.assertEqual(10, count)
        self.assertIn("15 more findings", out)
        self.assertEqual(3, shown("--limit", "3")[0])
        self.assertEqual(0, shown("--limit", "0")[0])
        count, out = shown("--verbose")
        self.assertEqual(25, count)
        self.assertNotIn("more finding", out)
        self.assertEqual(25, shown("--limit", "25")[0])
        self.assertIn("1 more finding;", shown("--limit", "24")[1])

    def test_lines_fit_the_width(self):
        cards = (host.card("N:;" + "Maximiliane " * 20 + ";;;", "TEL:" + "x1" * 120) +
                 host.card("N:;" + "明日香" * 40 + ";;;", "TEL:" + "電話" * 60) + host.card("N:;Ann;;;"))
        path = self.write("a.vcf", cards)
        for width in (40, 60, 80, 100):
            for line in self.run_host("scan", path, COLUMNS=str(width)).out.splitlines():
                self.assertLessEqual(cells(line), width, line)
            for line in self.run_on_terminal("scan", path, width=width).out.splitlines():
                self.assertLessEqual(cells(ESCAPE.sub("", line)), width, line)

    def test_wrapping_loses_nothing(self):
        phone = "電x" * 90
        out = self.run_host("scan", "--issues", "invalid-characters",
                            self.write("a.vcf", host.card("N:D;A;;;", "TEL:" + phone))).out
        self.assertIn(phone, "".join(line.strip() for line in out.splitlines()))

    def test_contacts_without_a_name_are_called_by_what_is_known(self):
        path = self.write("a.vcf", host.card("TEL:+49 30 1") + host.card("EMAIL:a@b.example", "TEL:1") +
                          host.card("X-NOTHING:x") + host.card("ORG:Acme", "X-ABShowAs:COMPANY") +
                          host.card("NOTE:remember"))
        out = self.run_host("scan", "--issues", "blank-name,empty-note", path).out
        for name in ("(no name, +49 30 1)", "(no name, a@b.example)", "(no name)\n", "  Acme\n", "(no name, remember)"):
            self.assertIn(name, out)
        document = self.run_host("scan", "--json", "--issues", "blank-name", path).json()
        self.assertEqual({""}, set(host.persons_of(document, "KRIssueBlankName")))

    def test_control_characters_are_escaped(self):
        evil = "\x1b]0;owned\x07\x1b[2JAnn\u202egnp\x9bm"
        path = self.write("a.vcf", host.card("N:;" + evil.replace(";", "\\;") + ";;;", "TEL:\x1b[31m"))
        for out in (self.run_on_terminal("scan", path).out, self.run_host("scan", path).out):
            plain = ESCAPE.sub("", out)
            for raw in ("\x1b]", "\x07", "\x1b[2J", "\x1b[31m", "\u202e", "\x9b"):
                self.assertNotIn(raw, out)
            self.assertNotIn("\x1b", plain)
            self.assertIn(r"\x1B]0;owned\x07\x1B[2JAnn\u202Egnp\x9Bm", plain)

    def test_colours_on_a_terminal_only(self):
        path = self.many(3)
        self.assertIn("\x1b[", self.run_on_terminal("scan", path).out)
        self.assertIn("\x1b[", self.run_on_terminal("scan", path, NO_COLOR="").out)
        self.assertNotIn("\x1b", self.run_on_terminal("scan", path, NO_COLOR="1").out)
        self.assertNotIn("\x1b", self.run_on_terminal("scan", path, TERM="dumb").out)
        self.assertNotIn("\x1b", self.run_host("scan", path).out)

    def test_the_same_text_on_a_terminal_and_in_a_pipe(self):
        path = self.many(15)
        self.assertEqual(self.run_host("scan", path).out, ESCAPE.sub("", self.run_on_terminal("scan", path).out))

    def test_progress_on_a_terminal_only(self):
        path = self.many(30)
        seen = self.run_on_terminal("scan", path, both=True).out
        self.assertIn(" %", seen)
        self.assertIn("Scanning", seen)
        # It is taken away before the report.
        self.assertLess(seen.rindex("\r\x1b[K"), seen.rindex("many.vcf"))
        self.assertNotIn("Scanning", self.run_on_terminal("scan", "--no-progress", path, both=True).out)
        self.assertNotIn("Scanning", self.run_on_terminal("scan", path).err)
        self.assertEqual("", self.run_host("scan", "--issues", "incomplete-name", path).err)

    def test_a_clean_book_is_told_so(self):
        path = self.write("a.vcf", host.card("N:Doe;Jane;;;", "NOTE:x"))
        self.assertIn("Nothing to clean up.", self.run_host("scan", path).out)

    def test_a_narrowed_scan_says_nothing_of_the_other_contacts(self):
        path = self.write("a.vcf", host.card("N:Doe;Jane;;;", "NOTE:x") + host.card("N:;;;;"))
        out = self.run_host("scan", "--where", "Jane", path).out
        self.assertIn("Nothing to clean up in the contacts asked for.", out)
        self.assertNotIn("Nothing to clean up", self.run_host("scan", path).out)


if __name__ == "__main__":
    host.main()
