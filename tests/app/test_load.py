#!/usr/bin/env python3
"""The person file loader as a host sees it: one JSON line for each call of the listener."""
import json
import os
import re
import struct
import subprocess

import host

ANN, BOB, CLEO = (host.card(f"N:;{name};;;", f"UID:{name.lower()}") for name in ("Ann", "Bob", "Cleo"))


def single(value):
    """The value in single precision."""
    return struct.unpack("f", struct.pack("f", value))[0]


class Load(host.HostTest):
    def load(self, content, *arguments, name="a.vcf", **more):
        result = self.run_host("load", self.write(name, content), *arguments, **more)
        self.err = result.err
        return [json.loads(line) for line in result.out.splitlines()]

    @staticmethod
    def brief(events):
        return [event["event"] + (" " + event["person"]["id"] if "person" in event else "") for event in events]

    def test_three_cards(self):
        events = self.load(ANN + BOB + CLEO)
        self.assertEqual(["start", "number", "progress ann", "progress bob", "progress cleo", "end"], self.brief(events))
        self.assertEqual({"event": "number", "total": 4}, events[1])
        self.assertEqual([single(100 / 3), single(200 / 3), 100.0], [event["progress"] for event in events[2:5]])
        self.assertEqual([0, 1, 2], [event["person"]["index"] for event in events[2:5]])
        self.assertEqual([["event"], ["event", "total"], ["event", "progress", "person"]],
                         [list(event) for event in events[:3]])
        self.assertEqual("", self.err)

    def test_a_person_is_as_in_show(self):
        path = host.ROOT / "examples/address-book.vcf"
        shown = self.run_host("show", "--json", path).json()["persons"]
        events = [json.loads(line) for line in self.run_host("load", path).out.splitlines()]
        loaded = [event["person"] for event in events if event["event"] == "progress"]
        for person in shown:  # in a book, the second holder of an ID has another
            person["id"] = re.sub(r"^([0-9a-f]{32})-\d+$", r"\1", person["id"])
        self.assertEqual(shown, loaded)
        self.assertEqual(len(shown) + 1, events[1]["total"])

    def test_junk_before_the_first_card_and_a_card_without_its_end(self):
        self.assertEqual(["start", "number", "progress ann", "end"],
                         self.brief(self.load("Hello,\n" + ANN + CLEO.replace("END:VCARD", ""))))
        self.assertEqual("", self.err)

    def test_what_is_no_person_is_counted_in_silence(self):
        events = self.load(ANN + "END:VCARD\r\n" + BOB)
        self.assertEqual(4, events[1]["total"])
        self.assertEqual([single(100 / 3), 100.0], [event["progress"] for event in events if event["event"] == "progress"])
        self.assertEqual([0, 1], [event["person"]["index"] for event in events if event["event"] == "progress"])
        self.assertEqual("", self.err)

    def test_notes_tell_file_line_card_and_reason(self):
        self.load(ANN + "TEL:1\r\nEND:VCARD\r\n" + BOB + "BEGIN:VCARD", "--notes")
        path = self.folder / "a.vcf"
        self.assertEqual([f"krcontacts: {path}:6: card 2: the lines belong to no card",
                          f"krcontacts: {path}:6: card 2: no BEGIN:VCARD begins the card (not loaded)",
                          f"krcontacts: {path}:13: the text behind the last END:VCARD is not read"],
                         self.err.splitlines())

    def test_nothing_to_read(self):
        for content in ("", "Dear diary\n", ANN.replace("END:VCARD", "end:vcard")):
            self.assertEqual(["start", "end"], self.brief(self.load(content)))
            self.assertEqual(f"krcontacts: {self.folder / 'a.vcf'}: nothing in this file can be loaded\n", self.err)

    def test_a_delimited_file(self):
        events = self.load("First name,Phone\nAnn,123\nBob\nCleo,789\n", "--notes", name="a.csv")
        self.assertEqual(["start", "number"], self.brief(events)[:2])
        self.assertEqual("end", events[-1]["event"])
        names = [event["person"]["showName"] for event in events[2:-1]]
        self.assertEqual(("Ann", "Cleo"), (names[0], names[-1]))
        self.assertEqual("123", events[2]["person"]["values"]["phone"][0]["value"])
        self.assertIn("a.csv:3: ", self.err)

    def test_encodings_and_extensions(self):
        text = host.card("N:;Zoë;;;", "UID:z")
        for name, content in (("a.VCF", text.encode()), ("b.vCard", text.encode("utf-16")),
                              ("c.vcf", text.encode("latin-1"))):
            self.assertEqual("Zoë", self.load(content, name=name)[2]["person"]["showName"])

    def test_files_that_cannot_be_used_are_named(self):
        (self.folder / "folder.vcf").mkdir()
        for path, reason in (("missing.vcf", "No such file"), ("folder.vcf", "Is a directory"),
                             (self.write("book.txt", ANN), "extension"), (self.write("book", ANN), "extension"),
                             ("-", "No such file")):
            result = self.run_host("load", path, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
            self.assertIn(str(path), result.err)
            self.assertIn(reason, result.err)
        path = self.write("secret.vcf", ANN)
        path.chmod(0)
        if not os.access(path, os.R_OK):  # root may read everything
            self.assertIn("ermission", self.run_host("load", path, code=2).err)

    def test_lines_come_while_the_file_is_read(self):
        path = self.write("many.vcf", ANN * 20000)
        process = subprocess.Popen([host.PROGRAM, "load", path], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=self.environment())
        lines = [process.stdout.readline() for _ in range(3)]
        self.assertEqual(["start", "number", "progress"], [json.loads(line)["event"] for line in lines])
        # The reader goes away: the program ends by itself and says nothing.
        process.stdout.close()
        self.assertEqual(b"", process.stderr.read())
        process.stderr.close()
        process.wait(timeout=host.TIMEOUT)


if __name__ == "__main__":
    host.main()
