#!/usr/bin/env python3
"""What a scan of random books finds, held finding by finding against an independent reading of the same books."""
import collections
import json
import re

import contract
import host
import random_book

SEEDS = (1, 2, 3, 4, 5)


def key(index, uid, info, sentence):
    return index, uid, json.dumps(info, sort_keys=True, ensure_ascii=False), sentence


def expected(issue, contacts):
    findings = collections.Counter()
    for index, contact in enumerate(contacts):
        found = contract.finding_of(issue, contact)
        if found is not None:
            findings[key(index, contact.uid, *found)] += 1
    return findings


def found(context):
    findings = collections.Counter()
    for finding in context["findings"]:
        person, = finding["persons"]
        findings[key(person["index"], person["id"], finding["info"], finding["describe"])] += 1
    return findings


class Agreement(host.HostTest):
    def scan(self, seed):
        text, contacts = random_book.book(2000, seed)
        path = self.write(f"random-{seed}.vcf", text)
        return self.run_host("scan", "--json", "--issues", ",".join(contract.SINGLE_FIELD), path).json(), contacts

    def test_every_finding_agrees(self):
        for seed in SEEDS:
            document, contacts = self.scan(seed)
            self.assertEqual(2000, document["addressBook"]["personCount"])
            contexts = {context["issue"]: context for context in document["contexts"]}
            for issue in contract.SINGLE_FIELD:
                with self.subTest(seed=seed, issue=issue):
                    wanted = expected(issue, contacts)
                    self.assertGreater(sum(wanted.values()), 50, "the random books are too tame")
                    got = found(contexts[issue])
                    self.assertEqual([], sorted((wanted - got).elements())[:3], "missing")
                    self.assertEqual([], sorted((got - wanted).elements())[:3], "too many")

    def test_findings_stand_in_the_order_of_names(self):
        for seed in SEEDS:
            document, contacts = self.scan(seed)
            for context in document["contexts"]:
                names = [finding["persons"][0] for finding in context["findings"]]
                # Organisations are sorted by a name that is not the one shown; other scripts by their Latin form; and
                # whether the few signs between "Z" and "a" come before the letters is left open.
                names = [person["showName"].lower() for person in names
                         if re.fullmatch(r"[ -Za-z{-~]*", person["showName"])
                         and not contacts[person["index"]].is_organization]
                self.assertGreater(len(set(names)), 5)
                self.assertEqual(sorted(names), names, (seed, context["issue"]))

    def test_contexts_stand_in_the_order_of_the_catalogue(self):
        document, _ = self.scan(1)
        order = [name for name in host.CATALOGUE if name in contract.SINGLE_FIELD]
        self.assertEqual(order, document["issues"])
        self.assertEqual(order, [context["issue"] for context in document["contexts"]])


if __name__ == "__main__":
    host.main()
