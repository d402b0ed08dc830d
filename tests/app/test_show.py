#!/usr/bin/env python3
"""The contacts as `show` gives them, as a document and as cards; and how `show` and `scan` are narrowed to some."""
import base64
import hashlib
import json
import re
import unicodedata

import host
import random_book
import schema

SCHEMA = json.loads((host.ROOT / "docs/show.schema.json").read_text(encoding="utf-8"))
ESCAPE = re.compile(r"\x1b\[[0-9;]*[A-Za-z]")
PICTURE = b"\x89PNG\r\n\x1a\n" + bytes(range(200))

FULL = host.card(
    "N:Barrow;Ann;Lee;Dr;Jr", "FN:Dr Ann Lee Barrow Jr", "NICKNAME:Annie", "TEL;TYPE=CELL:+44 7700 900123",
    "item1.TEL:020 7946 0000", "item1.X-ABLabel:Boat house", "EMAIL;TYPE=WORK:ann@example.com",
    "ADR;TYPE=HOME:;;1 Main Road;Exeter;Devon;EX1 1AA;United Kingdom", "IMPP;X-SERVICE-TYPE=Jabber:xmpp:ann@chat.example",
    "ORG:Barrow Ltd;Boats", "TITLE:Captain", "BDAY:1990-03-02", "URL:https://example.com/ann",
    r"NOTE:Met in Dover.\nOwes me a pint.", "CATEGORIES:Friends,Sailing",
    "PHOTO;ENCODING=b;TYPE=PNG:" + base64.b64encode(PICTURE).decode(), "UID:ann")
COMPANY = host.card("N:;;;;", "FN:Acme", "ORG:Acme", "X-ABShowAs:COMPANY", "TEL:1", "UID:acme")
BARE = host.card("NOTE:", "BDAY:--0302", "UID:bare")


def cells(line):
    """The width of a line on a terminal."""
    return sum(0 if unicodedata.combining(char) else 2 if unicodedata.east_asian_width(char) in "WF" else 1
               for char in line)


class Document(host.HostTest):
    def show(self, *arguments, **more):
        document = self.run_host("show", "--json", *arguments, **more).json()
        schema.check(document, SCHEMA, SCHEMA)
        return document

    def person(self, *lines, **more):
        return self.show(self.write("one.vcf", host.card(*lines, **more)))["persons"][0]

    def test_members_stand_in_their_order(self):
        document = self.show(self.write("a.vcf", FULL))
        self.assertEqual(["addressBook", "persons"], list(document))
        self.assertEqual(["id", "name", "personCount"], list(document["addressBook"]))
        person = document["persons"][0]
        self.assertEqual(["index", "id", "isOrganization", "displayName", "showName", "companyName", "jobTitle", "values"],
                         list(person))
        standard = [row["name"] for row in self.run_host("properties", "--json").json()["properties"]]
        self.assertEqual([name for name in standard if name in person["values"]], list(person["values"]))

    def test_what_a_contact_is_called(self):
        persons = self.show(self.write("a.vcf", FULL + COMPANY + BARE))["persons"]
        heads = [[person[name] for name in ("index", "id", "isOrganization", "displayName", "showName", "companyName",
                                            "jobTitle")] for person in persons]
        self.assertEqual([[0, "ann", False, "Ann Lee Barrow", "Ann Lee Barrow", "Barrow Ltd", "Captain"],
                          [1, "acme", True, "", "Acme", "Acme", None],
                          [2, "bare", False, "", "", "", None]], heads)

    def test_every_kind_of_value(self):
        values = self.show(self.write("a.vcf", FULL))["persons"][0]["values"]
        self.assertEqual({"label": "Name", "type": 5, "value": {"first": "Ann", "middle": "Lee", "last": "Barrow"}},
                         values["name"])
        self.assertEqual({"label": "Nickname", "type": 0, "value": "Annie"}, values["nickname"])
        self.assertEqual([{"label": "mobile", "type": 6, "value": "+44 7700 900123"},
                          {"label": "Boat house", "type": 6, "value": "020 7946 0000"}], values["phone"])
        self.assertEqual([{"label": "work", "type": 7, "value": "ann@example.com"}], values["email"])
        self.assertEqual([{"label": "home", "type": 9, "value": {
            "countryCode": None, "fields": {"street": "1 Main Road", "city": "Exeter", "region": "Devon",
                                            "postalCode": "EX1 1AA", "country": "United Kingdom"}}}], values["address"])
        self.assertEqual({"server": "xmpp", "userName": "ann@chat.example"}, values["instantMessage"][0]["value"])
        self.assertEqual("Boats", values["department"]["value"])
        self.assertEqual((3, "1990-03-02"), (values["birthday"]["type"], values["birthday"]["value"]))
        self.assertEqual("Met in Dover.\nOwes me a pint.", values["note"]["value"])
        self.assertEqual((10, ["Friends", "Sailing"]), (values["tags"]["type"], values["tags"]["value"]))
        self.assertEqual({"bytes": len(PICTURE), "md5": hashlib.md5(PICTURE).hexdigest()}, values["thumbnail"]["value"])

    def test_parts_and_values_that_are_not_there(self):
        person = self.person("N:;Ann;;;", "BDAY:--0302", "TEL:1")
        self.assertEqual({"first": "Ann", "middle": None, "last": None}, person["values"]["name"]["value"])
        self.assertEqual("--03-02", person["values"]["birthday"]["value"])
        self.assertEqual([{"label": None, "type": 6, "value": "1"}], person["values"]["phone"])
        self.assertEqual({"name", "birthday", "phone"}, set(person["values"]))

    def test_several_files_are_one_book(self):
        document = self.show(self.write("1.vcf", FULL), "-", self.write("2.vcf", FULL), stdin=COMPANY.encode())
        self.assertEqual([(0, "ann"), (1, "acme"), (2, "ann-2")],
                         [(person["index"], person["id"]) for person in document["persons"]])
        self.assertEqual("1.vcf, standard input, 2.vcf", document["addressBook"]["name"])
        self.assertEqual(3, document["addressBook"]["personCount"])

    def test_scan_and_show_tell_the_same_contacts(self):
        path = self.write("a.vcf", random_book.book(200, 5)[0])
        shown = {person["index"]: person for person in self.show(path)["persons"]}
        contexts = self.run_host("scan", "--json", "--all-issues", path).json()["contexts"]
        found = [person for context in contexts for finding in context["findings"] for person in finding["persons"]]
        self.assertTrue(found)
        for person in found:
            self.assertEqual(person, {name: shown[person["index"]][name] for name in ("index", "id", "showName")})

    def test_hostile_texts_make_valid_documents(self):
        person = self.person('NOTE:quote " back \\\\ bell \x07 escape \x1b[31m line\\nend \u2028 \u202e', "N:;A\x00B;;;")
        self.assertIn("\x1b[31m line\nend \u2028 \u202e", person["values"]["note"]["value"])
        raw = self.run_host("show", "--json", self.folder / "one.vcf").out
        self.assertFalse([char for char in raw if char != "\n" and unicodedata.category(char) == "Cc"])

    def test_an_empty_file_is_an_empty_book(self):
        document = self.show(self.write("empty.vcf", ""))
        self.assertEqual((0, []), (document["addressBook"]["personCount"], document["persons"]))
        self.assertEqual("empty.vcf · 0 contacts\n", self.run_host("show", self.folder / "empty.vcf").out)

    def test_files_that_cannot_be_used_are_named(self):
        for path in ("missing.vcf", self.write("book.txt", FULL), self.write("diary.vcf", "Dear diary")):
            result = self.run_host("show", "--json", path, code=2)
            self.assertEqual("", result.out)
            self.assertEqual(1, result.err.count("\n"))
            self.assertIn(str(path), result.err)


class Narrowing(host.HostTest):
    def setUp(self):
        super().setUp()
        self.path = self.write("a.vcf", FULL + COMPANY + BARE)

    def ids(self, *arguments):
        document = self.run_host("show", "--json", self.path, *arguments).json()
        schema.check(document, SCHEMA, SCHEMA)
        self.assertEqual(3, document["addressBook"]["personCount"])
        return [person["id"] for person in document["persons"]]

    def test_every_value_shown_is_looked_at(self):
        for text in ("Annie", "7700 900", "0000", "ann@example", "main road", "EX1", "united", "chat.example", "xmpp",
                     "Barrow Ltd", "boats", "captain", "1990-03", "example.com/ann", "pint", "sailing", "Lee Barrow",
                     "dr", "JR"):
            self.assertEqual(["ann"], self.ids("--where", text), text)

    def test_case_of_any_script_does_not_matter(self):
        self.path = self.write("b.vcf", host.card("N:ÅSTRÖM;Ελένη;;;", "UID:e") * 2 + COMPANY)
        self.assertEqual(["e", "e-2"], self.ids("--where", "åström"))
        self.assertEqual(["e", "e-2"], self.ids("--where", "ΕΛΈΝΗ"))

    def test_labels_marks_and_pictures_are_not_looked_at(self):
        for text in ("boat house", "mobile", "yes", "png", "nowhere at all"):
            self.assertEqual([], self.ids("--where", text), text)

    def test_all_texts_must_be_there_and_any_id_will_do(self):
        self.assertEqual(["ann"], self.ids("--where", "ann", "--where", "pint"))
        self.assertEqual([], self.ids("--where", "ann", "--where", "acme"))
        self.assertEqual(["ann", "bare"], self.ids("--id", "bare", "--id", "ann"))
        self.assertEqual([], self.ids("--id", "bare", "--where", "ann"))
        self.assertEqual(["ann", "acme", "bare"], self.ids("--where", ""))

    def test_places_stay_those_of_the_book(self):
        document = self.run_host("show", "--json", self.path, "--id", "bare").json()
        self.assertEqual(2, document["persons"][0]["index"])
        out = self.run_host("show", self.path, "--id", "bare").out
        self.assertIn("a.vcf · 1 of 3 contacts\n\n 3  (no name)\n", out)

    def test_an_id_must_be_exact(self):
        for command in ("show", "scan"):
            for wrong in ("ANN", "an", "ann ", ""):
                result = self.run_host(command, self.path, "--id", "ann", "--id", wrong, code=2)
                self.assertEqual(("", 1), (result.out, result.err.count("\n")))
                self.assertIn(f'"{wrong}"', result.err)

    def test_a_scan_is_narrowed_to_findings_with_a_matching_contact(self):
        path = self.write("c.vcf", host.card("N:;Ann;;;", "NOTE:x", "UID:1") + host.card("N:;Bob;;;", "UID:2")
                          + host.card("N:Doe;Cleo;;;", "UID:3"))

        def found(*arguments):
            document = self.run_host("scan", "--json", "--issues", "incomplete-name,empty-note", path, *arguments).json()
            self.assertEqual(3, document["addressBook"]["personCount"])
            self.assertEqual(["KRIssueIncompleteName", "KRIssueNoteWithSpacingOnly"], document["issues"])
            return {context["issue"]: [finding["persons"][0]["id"] for finding in context["findings"]]
                    for context in document["contexts"]}

        self.assertEqual({"KRIssueIncompleteName": ["1", "2"], "KRIssueNoteWithSpacingOnly": ["2", "3"]}, found())
        self.assertEqual({"KRIssueIncompleteName": ["1"]}, found("--where", "ann"))
        self.assertEqual({"KRIssueNoteWithSpacingOnly": ["3"]}, found("--id", "3"))
        self.assertEqual({}, found("--where", "nobody"))
        events = self.run_host("scan", "--events", "--issues", "incomplete-name", path, "--id", "2").out.splitlines()
        end = json.loads(events[-1])["result"]
        self.assertEqual(["2"], [finding["persons"][0]["id"] for finding in end["contexts"][0]["findings"]])
        self.run_host("scan", "--exit-code", "--issues", "incomplete-name", path, "--id", "3")
        self.run_host("scan", "--exit-code", "--issues", "incomplete-name", path, "--id", "2", code=1)


class Cards(host.HostTest):
    def test_a_card_tells_every_value_with_its_name_and_label(self):
        expected = """\
a.vcf · 2 contacts

 1  Dr Ann Lee Barrow Jr
    Nickname        Annie
    Phone           mobile      +44 7700 900123
                    Boat house  020 7946 0000
    E-mail          work        ann@example.com
    Address         home        1 Main Road, Exeter, Devon EX1 1AA, United
                                Kingdom
    Instant Message ann@chat.example (Jabber)
    Company         Barrow Ltd
    Department      Boats
    Job Title       Captain
    Birthday        1990-03-02
    Web Page        https://example.com/ann
    Note            Met in Dover.
                    Owes me a pint.
    Tags            Friends, Sailing
    Photo           208 bytes
    ID              ann

 2  Acme  company
    Phone           1
    ID              acme
"""
        self.assertEqual(expected, self.run_host("show", self.write("a.vcf", FULL + COMPANY)).out)

    def test_lines_fit_the_width(self):
        note = "NOTE:" + r"A very long note. 山田太郎様、お世話になっております。\n" * 8 + "x" * 300
        path = self.write("a.vcf", host.card("N:;" + "Maximiliane " * 20 + ";;;", note, "ORG:" + "山" * 90, "TEL:" + "1" * 150,
                                             "item1.TEL:5", "item1.X-ABLabel:" + "a label that has no end " * 3,
                                             "ADR:;;" + "Long Road " * 12 + ";;;;", "UID:" + "u" * 99) + FULL)
        for width in (40, 80, 120):
            for line in self.run_host("show", path, COLUMNS=str(width)).out.splitlines():
                self.assertLessEqual(cells(line), width, line)
                self.assertEqual(line.rstrip(), line)

    def test_colours_on_a_terminal_only(self):
        path = self.write("a.vcf", FULL)
        plain = self.run_host("show", path).out
        self.assertNotIn("\x1b", plain)
        coloured = self.run_on_terminal("show", path).out
        self.assertIn("\x1b[1m", coloured)
        self.assertEqual(plain, ESCAPE.sub("", coloured))
        self.assertNotIn("\x1b", self.run_on_terminal("show", path, NO_COLOR="1").out)

    def test_nothing_in_a_card_reaches_the_terminal_raw(self):
        path = self.write("a.vcf", host.card("N:;\x1b[31mAnn\x07;;;", "NOTE:\x1b]0;x\x07\\n\u202eabc", "TEL:\x9b1m"))
        out = self.run_host("show", path).out
        self.assertFalse([char for char in out if char != "\n" and unicodedata.category(char) in ("Cc", "Cf")], out)
        self.assertIn(r"\x1B[31mAnn\x07", out)

    def test_several_lines_in_a_field_of_an_address_are_one(self):
        path = self.write("a.vcf", host.card(r"ADR:;;1 Main Road\nFlat 2;Exeter;;;", "UID:a"))
        self.assertIn("    Address         1 Main Road, Flat 2, Exeter\n", self.run_host("show", path).out)


if __name__ == "__main__":
    host.main()
