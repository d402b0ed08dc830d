#!/usr/bin/env python3
"""Every fix that changes something, applied to the whole of one issue in a book that has every issue: what a scan and the
contacts say before and after, and what the trash holds. tests/app/fix_outcomes.json says which findings a fix may bring
that were not there before."""
import json
import shutil

import host

EXAMPLE = host.ROOT / "examples/address-book.vcf"
OUTCOMES = json.loads((host.ROOT / "tests/app/fix_outcomes.json").read_text(encoding="utf-8"))["fixes"]

# What a fix may change of a contact that stays.
PROPERTIES = {
    "delete-duplicate-values": {"duplicate-phone": "phone", "duplicate-email": "email", "duplicate-address": "address"},
    "delete-field": {"unusual-title": "title", "unusual-suffix": "suffix"},
    "remove-space": {"first-name-spacing": "name"},
    "use-default-string": {"incomplete-name": "name"},
}
LOSES_FIRST_TOO = ("merge", "delete-contact")


class Outcome(host.HostTest):
    def setUp(self):
        super().setUp()
        self.book = self.folder / "book.vcf"
        shutil.copy(EXAMPLE, self.book)
        self.run_host("books", "add", self.book)
        self.shorts = {row["issue"]: row["shortName"] for row in self.run_host("issues", "--json").json()["issues"]}

    def persons(self):
        return {person["id"]: person for person in self.run_host("show", "--json", self.book).json()["persons"]}

    def findings(self):
        """Every finding by its issue and the IDs of its contacts."""
        document = self.run_host("scan", "--json", "--all-issues", self.book).json()
        return {(self.shorts[context["issue"]], tuple(person["id"] for person in finding["persons"])): finding
                for context in document["contexts"] for finding in context["findings"]}

    @staticmethod
    def content(person):
        return {name: person[name] for name in ("showName", "values")}

    def check(self, issue, handle, allowed):
        before, found = self.persons(), self.findings()
        groups = [IDs for each, IDs in found if each == issue]
        self.assertTrue(groups, "the book has no such finding")
        main = [IDs[0] for IDs in groups]
        deleted = set()
        if handle == "merge":
            deleted = {ID for IDs in groups for ID in IDs}
        elif handle == "delete-duplicates":
            deleted = {ID for IDs in groups for ID in IDs[1:]}
        elif handle == "delete-contact":
            deleted = set(main)
        self.run_host("fix", self.book, "--apply", f"{issue}={handle}")
        after, now = self.persons(), self.findings()

        # Its findings are gone; of others only those came that are listed.
        self.assertEqual([], [IDs for each, IDs in now if each == issue and each not in allowed])
        came = sorted({each for each, IDs in now.keys() - found.keys()})
        self.assertEqual(sorted(allowed), came)

        # Nothing else has changed.
        self.assertEqual([ID for ID in before if ID not in deleted], [ID for ID in after if ID in before])
        made = [ID for ID in after if ID not in before]
        settled = len({ID for IDs in groups for ID in IDs})
        self.assertLessEqual(len(made), len(groups) if handle == "merge" else 0)
        self.assertEqual(handle == "merge", bool(made), settled)
        changes = PROPERTIES.get(handle, {}).get(issue)
        for ID, person in after.items():
            if ID in made:
                continue
            if changes is None or ID not in main:
                self.assertEqual(self.content(before[ID]), self.content(person))
                continue
            values, former = dict(person["values"]), dict(before[ID]["values"])
            self.assertNotEqual(former.pop(changes, None), values.pop(changes, None), ID)
            self.assertEqual(former, values)

        # The trash holds exactly the deleted contacts, whole, and gives them back.
        trash = self.run_host("trash", "show", "--json").json()["persons"]
        self.assertEqual(sorted(deleted), sorted(person["id"] for person in trash))
        for person in trash:
            self.assertEqual(self.content(before[person["id"]]), self.content(person))
        if deleted:
            self.run_host("trash", "restore", "--all")
            restored = self.persons()
            self.assertEqual(set(before) | set(made), set(restored))
            for ID in deleted:
                self.assertEqual(self.content(before[ID]), self.content(restored[ID]))
            self.assertEqual(0, len(self.run_host("trash", "show", "--json").json()["persons"]))

    def test_the_book_has_every_issue(self):
        self.assertEqual(set(self.shorts.values()), {issue for issue, _ in self.findings()})

    def test_the_document_lists_every_fix_that_changes_something(self):
        offered = {(row["shortName"], handle["shortName"])
                   for row in self.run_host("issues", "--json").json()["issues"] for handle in row["handles"]}
        offered |= {(issue, "merge") for issue in ("duplicate-names", "shared-phone", "shared-email")}
        offered.add(("incomplete-name", "use-default-string"))
        changing = sorted(each for each in offered if each[1] not in ("edit", "ignore"))
        self.assertEqual(changing, sorted((fix["issue"], fix["handle"]) for fix in OUTCOMES))


def outcome(fix):
    return lambda self: self.check(fix["issue"], fix["handle"], fix["newFindings"])


for each in OUTCOMES:
    name = f"test_{each['issue']}_{each['handle']}".replace("-", "_")
    setattr(Outcome, name, outcome(each))


if __name__ == "__main__":
    host.main()
