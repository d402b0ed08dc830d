#!/usr/bin/env python3
"""What a scan of random books finds, held finding by finding against an independent reading of the same books.

KR_AGREEMENT_SEEDS=50 in the environment takes that many books instead of a few."""
import collections
import json
import os
import re

import contract
import host
import random_book

SEEDS = range(1, 1 + int(os.environ.get("KR_AGREEMENT_SEEDS", "4")))
ALL = contract.SINGLE_FIELD + contract.REPEATED + contract.AMONG
PARTS = ("first", "middle", "last")


def key(places, uids, info, sentence):
    return tuple(places), tuple(uids), json.dumps(info, sort_keys=True, ensure_ascii=False), sentence


def expected(issue, contacts, setting=7, **lists):
    if issue in contract.AMONG:
        found = contract.groups_of(issue, contacts, setting)
    else:
        found = [([place], *finding) for place, finding in
                 enumerate(contract.finding_of(issue, contact, **lists) for contact in contacts) if finding is not None]
    return collections.Counter(key(places, (contacts[place].uid for place in places), info, sentence)
                               for places, info, sentence in found)


def found(context):
    return collections.Counter(key([person["index"] for person in finding["persons"]],
                                   [person["id"] for person in finding["persons"]], finding["info"], finding["describe"])
                               for finding in context["findings"])


class Agreement(host.HostTest):
    def book(self, seed):
        text, contacts = random_book.book(2000, seed)
        return self.write(f"random-{seed}.vcf", text), contacts

    def assert_agrees(self, wanted, got):
        self.assertEqual([], sorted((wanted - got).elements())[:3], "missing")
        self.assertEqual([], sorted((got - wanted).elements())[:3], "too many")

    def contexts(self, path, *arguments):
        document = self.run_host("scan", "--json", *arguments, path).json()
        self.assertEqual(2000, document["addressBook"]["personCount"])
        return {context["issue"]: context for context in document["contexts"]}

    def test_all_issues_are_held_against_the_reading(self):
        self.assertEqual(sorted(host.CATALOGUE), sorted(ALL))

    def test_every_finding_agrees(self):
        for seed in SEEDS:
            path, contacts = self.book(seed)
            contexts = self.contexts(path, "--all-issues")
            for issue in ALL:
                with self.subTest(seed=seed, issue=issue):
                    wanted = expected(issue, contacts)
                    self.assertGreater(sum(wanted.values()), 50, "the random books are too tame")
                    self.assert_agrees(wanted, found(contexts[issue]))

    def test_names_agree_under_every_setting(self):
        for seed in SEEDS:
            path, contacts = self.book(seed)
            sizes = set()
            for setting in range(1, 8):
                parts = [part for place, part in enumerate(PARTS) if setting >> place & 1]
                self.run_host("settings", "set", "duplicate-names", *parts)
                context = self.contexts(path, "--issues", "duplicate-names")["KRIssueDuplicateNames"]
                with self.subTest(seed=seed, setting=setting):
                    wanted = expected("KRIssueDuplicateNames", contacts, setting)
                    self.assert_agrees(wanted, found(context))
                    sizes.add(sum(wanted.values()))
            self.assertGreater(len(sizes), 4, "the settings make no difference")

    def test_prefixes_and_suffixes_agree_with_changed_lists(self):
        prefixes, suffixes = ["Dr.", "Frau", "Prof. Dr."], ["Esq", "iii", "X"]
        self.run_host("settings", "set", "prefixes", *prefixes)
        self.run_host("settings", "set", "suffixes", *suffixes)
        for seed in SEEDS:
            path, contacts = self.book(seed)
            contexts = self.contexts(path, "--issues", "unusual-title,unusual-suffix")
            for issue in ("KRIssueUnusualTitle", "KRIssueUnusualSuffix"):
                with self.subTest(seed=seed, issue=issue):
                    wanted = expected(issue, contacts, prefixes=prefixes, suffixes=suffixes)
                    self.assertNotEqual(expected(issue, contacts), wanted)
                    self.assert_agrees(wanted, found(contexts[issue]))

    def test_the_example_shows_every_issue(self):
        path = host.ROOT / "examples/address-book.vcf"
        document = self.run_host("scan", "--json", "--all-issues", path).json()
        self.assertEqual(host.CATALOGUE, [context["issue"] for context in document["contexts"]])
        shown = self.run_host("scan", "--all-issues", path).out
        for context in document["contexts"]:
            self.assertIn(f"\n{context['displayName']} ({len(context['findings'])})\n", shown)

    def test_every_run_writes_the_same_document(self):
        path, _ = self.book(1)
        first = self.run_host("scan", "--json", "--all-issues", path).out
        for _ in range(3):
            self.assertEqual(first, self.run_host("scan", "--json", "--all-issues", path).out)

    def test_findings_stand_in_the_order_of_names(self):
        for seed in SEEDS:
            path, contacts = self.book(seed)
            for context in self.contexts(path, "--all-issues").values():
                names = [finding["persons"][0] for finding in context["findings"]]
                # Organisations are sorted by a name that is not the one shown; other scripts by their Latin form; and
                # whether the few signs between "Z" and "a" come before the letters is left open.
                names = [person["showName"].lower() for person in names
                         if re.fullmatch(r"[ -Za-z{-~]*", person["showName"])
                         and not contacts[person["index"]].is_organization]
                self.assertGreater(len(set(names)), 2)
                self.assertEqual(sorted(names), names, (seed, context["issue"]))

    def test_findings_of_the_same_name_stand_in_the_order_of_their_groups(self):
        """By the place of the group's first contact, exact duplicates by that of the second."""
        path, contacts = self.book(2)
        contexts = self.contexts(path, "--all-issues")
        for issue in contract.AMONG:
            by_name = collections.defaultdict(list)
            for finding in contexts[issue]["findings"]:
                first = finding["persons"][0]
                # Organisations are sorted by a name that is not the one shown.
                if not contacts[first["index"]].is_organization:
                    by_name[first["showName"]].append(finding["persons"])
            place = 1 if issue == "Duplicate Info" else 0
            orders = [[group[place]["index"] for group in groups] for groups in by_name.values()]
            self.assertEqual([sorted(order) for order in orders], orders, issue)
            if issue not in ("KRIssueDuplicateNames", "Duplicate Info"):
                self.assertGreater(max(map(len, orders)), 5)

    def test_contexts_stand_in_the_order_of_the_catalogue(self):
        path, _ = self.book(1)
        document = self.run_host("scan", "--json", "--all-issues", path).json()
        self.assertEqual(host.CATALOGUE, document["issues"])
        self.assertEqual(host.CATALOGUE, [context["issue"] for context in document["contexts"]])


if __name__ == "__main__":
    host.main()
