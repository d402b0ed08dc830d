#!/usr/bin/env python3
"""`scan --explain`: what is nearly the same, held against an independent reading of random books, and how it is shown."""
import collections
import json
import unicodedata

import contract
import host
import random_book
import schema

SCHEMA = json.loads((host.ROOT / "docs/scan.schema.json").read_text(encoding="utf-8"))
PHONES = "KRIssuePhonesDuplicatedAmongMultipleContacts"
EMAILS = "KRIssueEmailsDuplicatedAmongMultipleContacts"
NEARLY = (host.card("N:Lee;Ann;;;", "TEL:+44 7700 900101", "UID:one") + host.card("N:LEE;Ann;;;", "TEL:07700 900101", "UID:two")
          + host.card("N:Lee;Ann;;;", "UID:three") + host.card("N:Lee;Bob;;;", "UID:four"))


def folded(text):
    """Caseless, without marks, spaces and punctuation."""
    kept = (char for char in unicodedata.normalize("NFD", text.casefold())
            if not (unicodedata.category(char)[0] in "MZP" or unicodedata.category(char) in ("Cc", "Cf")))
    return "".join(kept)


def folded_phone(text):
    digits = "".join(str(unicodedata.digit(char)) for char in text if unicodedata.category(char) == "Nd")
    return digits[-9:] or folded(text)


def exact_and_folded(issue, contact):
    """[(exact key, folded key)] of a contact."""
    if issue == "KRIssueDuplicateNames":
        name = contract.name_of(contact, 7)
        if name is None:
            return []
        parts = [part if isinstance(part, tuple) else ("organization", part) for part in name[1:]]
        key = tuple((label, folded(text)) for label, text in parts if folded(text))
        return [(name, key)] if key else []
    values, fold = (contact.phones, folded_phone) if issue == PHONES else (contact.emails, folded)
    return [((contact.is_organization, value), (contact.is_organization, fold(value))) for value in values if fold(value)]


def expected(issue, contacts):
    """The near-misses as sets of sides, each the places of its contacts."""
    groups = collections.defaultdict(lambda: collections.defaultdict(list))
    for place, contact in enumerate(contacts):
        for exact, loose in exact_and_folded(issue, contact):
            if place not in groups[loose][exact]:
                groups[loose][exact].append(place)
    misses = []
    for sides in groups.values():
        if len(sides) > 1 and len({place for places in sides.values() for place in places}) > 1:
            misses.append(tuple(sorted(tuple(places) for places in sides.values())))
    return collections.Counter(misses)


class Explain(host.HostTest):
    def explain(self, path, *arguments):
        return self.run_host("scan", "--explain", "--json", *arguments, path).json()

    def test_near_misses_agree_with_an_independent_reading(self):
        text, contacts = random_book.book(1500, 21)
        path = self.write("random.vcf", text)
        document = self.explain(path, "--all-issues")
        schema.check(document, SCHEMA, SCHEMA)
        for issue in ("KRIssueDuplicateNames", PHONES, EMAILS):
            with self.subTest(issue=issue):
                found = collections.Counter(
                    tuple(sorted(tuple(person["index"] for person in side["persons"]) for side in miss["sides"]))
                    for miss in document["nearMisses"] if miss["issue"] == issue)
                wanted = expected(issue, contacts)
                self.assertGreater(sum(wanted.values()), 0, "the random books are too tame")
                self.assertEqual(wanted, found)

    def test_findings_are_the_same_with_and_without(self):
        path = self.write("random.vcf", random_book.book(300, 5)[0])
        document = self.explain(path, "--all-issues")
        self.assertTrue(document.pop("nearMisses"))
        self.assertEqual(document, self.run_host("scan", "--json", "--all-issues", path).json())

    def test_keys_and_differences_are_told_part_by_part(self):
        document = self.explain(self.write("a.vcf", NEARLY), "--issues", "duplicate-names,blank-name")
        miss, = document["nearMisses"]
        self.assertEqual("KRIssueDuplicateNames", miss["issue"])
        self.assertEqual("first:ann last:lee", miss["foldedKey"])
        self.assertEqual([{"part": "last", "by": ["case"]}], miss["differences"])
        self.assertEqual(["first:Annlasst:Lee", "first:Annlasst:LEE"], [side["key"] for side in miss["sides"]])
        self.assertEqual([["one", "three"], ["two"]],
                         [[person["id"] for person in side["persons"]] for side in miss["sides"]])
        self.assertEqual([{"part": "first", "text": "Ann", "folded": "ann"}, {"part": "last", "text": "LEE", "folded": "lee"}],
                         miss["sides"][1]["parts"])

    def test_people_are_shown_what_differs(self):
        out = self.run_host("scan", "--explain", "--issues", "duplicate-names,shared-phone", self.write("a.vcf", NEARLY)).out
        for text in ("(1)\n  1  Not the same, last: upper and lower case\n", "     Ann Lee, Ann Lee\n",
                     '       first "Ann", last "LEE"\n', "Not the same, phone: digits before the last nine\n",
                     '       phone "07700 900101"\n'):
            self.assertIn(text, out)

    def test_of_long_texts_the_place_where_they_part_is_shown(self):
        for start in ("", "ü" * 300):
            notes = [start + word + "z" * 900 for word in ("Here", "here")]
            cards = "".join(host.card("N:Lee;Ann;;;", "NOTE:" + note) for note in notes)
            path = self.write("a.vcf", cards)
            names = ("--issues", "exact-duplicates")
            out = self.run_host("scan", "--explain", *names, path).out
            self.assertLess(out.count("\n"), 30)
            self.assertLessEqual(max(map(len, out.splitlines())), 80)
            for note in notes:
                shown = note[max(len(start) - 20, 0):][:60]
                self.assertIn(shown, out.replace("\n         ", ""))
                self.assertNotIn(note, out.replace("\n         ", ""))
            whole = self.run_host("scan", "--explain", "--verbose", *names, path).out.replace("\n         ", "")
            for note in notes:
                self.assertIn(note, whole)

    def test_nothing_to_explain_is_told(self):
        path = self.write("a.vcf", host.card("N:Lee;Ann;;;"))
        self.assertIn("Nothing is nearly the same.", self.run_host("scan", "--explain", path).out)
        self.assertIn("None of these issues compares contacts",
                      self.run_host("scan", "--explain", "--issues", "blank-name", path).out)

    def test_limits_and_narrowing_apply(self):
        cards = "".join(host.card(f"N:Lee{i};Ann;;;") + host.card(f"N:LEE{i};Ann;;;") for i in range(12))
        path = self.write("a.vcf", cards)
        names = ("--issues", "duplicate-names")
        self.assertIn("and 2 more; --verbose shows all", self.run_host("scan", "--explain", *names, path).out)
        self.assertEqual(12, self.run_host("scan", "--explain", "--verbose", *names, path).out.count("Not the same"))
        self.assertEqual(0, self.run_host("scan", "--explain", "--limit", "0", *names, path).out.count("Not the same"))
        document = self.explain(path, *names, "--where", "Ann Lee7")
        self.assertEqual(["first:ann last:lee7"], [miss["foldedKey"] for miss in document["nearMisses"]])

    def test_the_document_has_the_member_only_when_asked(self):
        path = self.write("a.vcf", NEARLY)
        self.assertNotIn("nearMisses", self.run_host("scan", "--json", path).json())
        self.run_host("scan", "--explain", "--events", path, code=2)


if __name__ == "__main__":
    host.main()
