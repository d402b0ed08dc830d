#!/usr/bin/env python3
"""The document of `scan --json`: its shape, its order, and that it is valid whatever a contact holds."""
import copy
import json
import os
import subprocess

import host
import random_book
import schema

SCHEMA = json.loads((host.ROOT / "docs/scan.schema.json").read_text(encoding="utf-8"))

FINDING_RICH = (host.card("N:;Ann;;Frau;", "FN:Ann", "TEL:12a", "TEL:x9", "EMAIL:bob", "UID:one")
                + host.card("N:Doe;Mary Ann;;;Esq.", "FN:Mary Ann Doe", "ORG:Acme", "TEL:12a", "NOTE:x", "UID:two"))


class Document(host.HostTest):
    def scan(self, path, *arguments, **more):
        return self.run_host("scan", "--json", *arguments, path, **more).json()

    def assert_follows_schema(self, document):
        schema.check(document, SCHEMA, SCHEMA)

    def test_random_books_and_the_example_follow_the_schema(self):
        text, _ = random_book.book(500, 11)
        for path in (self.write("random.vcf", text), self.write("empty.vcf", ""),
                     host.ROOT / "examples/address-book.vcf"):
            self.assert_follows_schema(self.scan(path, "--all-issues"))

    def test_the_schema_refuses_other_documents(self):
        document = self.scan(self.write("a.vcf", FINDING_RICH))
        self.assert_follows_schema(document)
        finding = ("contexts", 0, "findings", 0)
        for path, value in ((("addressBook",), None), (("addressBook", "personCount"), "2"), (("issues",), [1]),
                            (("contexts", 0, "multiPerson"), 0), (("contexts", 0, "handles"), "x"),
                            ((*finding, "info"), 5), ((*finding, "persons", 0, "index"), -1), ((*finding, "more"), 1),
                            ((*finding, "persons", 0, "index"), 0.5)):
            spoiled = copy.deepcopy(document)
            place = spoiled
            for step in path[:-1]:
                place = place[step]
            place[path[-1]] = value
            with self.assertRaises(schema.Mismatch, msg=path):
                self.assert_follows_schema(spoiled)

    def test_members_stand_in_their_order(self):
        document = self.scan(self.write("a.vcf", FINDING_RICH))
        self.assertEqual(["addressBook", "issues", "contexts"], list(document))
        self.assertEqual(["id", "name", "personCount"], list(document["addressBook"]))
        for context in document["contexts"]:
            self.assertEqual(["issue", "displayName", "describe", "multiPerson", "handles", "findings"], list(context))
            for finding in context["findings"]:
                self.assertEqual(["describe", "info", "persons"], list(finding))
                for person in finding["persons"]:
                    self.assertEqual(["index", "id", "showName"], list(person))

    def test_findings_are_as_the_detectors_made_them(self):
        document = self.scan(self.write("a.vcf", FINDING_RICH), "--issues",
                             "invalid-characters,unusual-title,unusual-suffix,incomplete-name")
        ann = {"index": 0, "id": "one", "showName": "Ann"}
        mary = {"index": 1, "id": "two", "showName": "Mary Ann Doe"}
        contexts = {context["issue"]: context for context in document["contexts"]}
        self.assertEqual(["KRIssueIncompleteName", "KRIssueInvalidCharacters", "KRIssueUnusualTitle",
                          "KRIssueUnusualSuffix"], document["issues"])
        self.assertEqual(document["issues"], list(contexts))
        self.assertEqual(
            [{"describe": 'This Contact\'s phone number "12a", "x9" and email address "bob" includes invalid characters.',
              "info": {"email": ["bob"], "phone": ["12a", "x9"]}, "persons": [ann]},
             {"describe": 'This Contact\'s phone number "12a" includes invalid characters.', "info": {"phone": ["12a"]},
              "persons": [mary]}], contexts["KRIssueInvalidCharacters"]["findings"])
        self.assertEqual([{"describe": 'The prefix "Frau" of this Contact is invalid.', "info": "Frau", "persons": [ann]}],
                         contexts["KRIssueUnusualTitle"]["findings"])
        self.assertEqual(["KRHandleNameAddSupport", "KRHandleNameDeleteProperty", "KRHandleNameIgnore"],
                         contexts["KRIssueUnusualSuffix"]["handles"])
        self.assertIsNone(contexts["KRIssueIncompleteName"]["findings"][0]["info"])
        self.assertIs(False, contexts["KRIssueIncompleteName"]["multiPerson"])

    def test_any_text_makes_valid_json(self):
        odd = ['quote" back\\ slash', "tab\tbell\x07esc\x1b[31m", "nul\x01", "\u2028\u2029\x7f\x9b", "😀 日本", "</script>"]
        cards = "".join(host.card(f"N:;{random_book.escaped(text)};;;", f"UID:{i}") for i, text in enumerate(odd))
        result = self.run_host("scan", "--json", "--issues", "incomplete-name", self.write("a.vcf", cards))
        for raw in ("\x1b", "\x07", "\x7f", "\x9b", "\u2028"):
            self.assertNotIn(raw, result.out)
        persons = [finding["persons"][0] for finding in result.json()["contexts"][0]["findings"]]
        self.assertEqual(odd, [person["showName"] for person in sorted(persons, key=lambda each: each["index"])])

    def test_ids_are_the_same_on_every_reading_and_unique(self):
        path = self.write("a.vcf", (host.card("N:;Ann;;;") * 3 + host.card("N:;Bob;;;", "UID:u") * 2))
        first = self.scan(path, "--issues", "incomplete-name")
        self.assertEqual(first, self.scan(path, "--issues", "incomplete-name"))
        ids = [finding["persons"][0]["id"] for finding in first["contexts"][0]["findings"]]
        self.assertEqual(5, len(set(ids)))

    def test_limit_and_verbose_leave_the_document_whole(self):
        path = self.write("a.vcf", host.card("N:;Ann;;;") * 30)
        names = ("--issues", "incomplete-name")
        whole = self.scan(path, *names)
        self.assertEqual(whole, self.scan(path, *names, "--limit", "1"))
        self.assertEqual(whole, self.scan(path, *names, "--verbose"))
        self.assertEqual(30, len(whole["contexts"][0]["findings"]))

    def test_the_document_costs_no_memory(self):
        path = self.write("a.vcf", "".join(
            host.card(f"N:;Ann {i};;{'Frau' * 50};{'Esq' * 50}", f"TEL:{'x' * 200}", f"UID:{i}") for i in range(4000)))

        def peak(*arguments):
            with open(self.folder / "out", "wb") as out:
                process = subprocess.Popen([host.PROGRAM, "scan", "--all-issues", *arguments, path], stdout=out,
                                           stderr=subprocess.DEVNULL, env=self.environment())
                _, status, usage = os.wait4(process.pid, 0)
            process.returncode = status
            self.assertEqual(0, status)
            return usage.ru_maxrss * 1024, (self.folder / "out").stat().st_size

        bare, _ = peak("--limit", "0")
        full, size = peak("--json")
        self.assertGreater(size, 4_000_000)
        self.assertLess(full - bare, 2_000_000)


if __name__ == "__main__":
    host.main()
