#!/usr/bin/env python3
"""The settings command: name parts, prefixes and suffixes."""
import json

import contract
import host

DEFAULTS = {"duplicateNameParts": ["first", "middle", "last"], "prefixes": contract.PREFIXES,
            "suffixes": contract.SUFFIXES}


class Settings(host.HostTest):
    def settings(self):
        return self.run_host("settings", "--json").json()

    def test_defaults(self):
        self.assertEqual(DEFAULTS, self.settings())
        self.assertEqual(list(DEFAULTS), list(self.settings()))

    def test_shown_to_people(self):
        shown = self.run_host("settings").out
        for word in ("first, middle, last", "1LT, 1ST", "VIII, X", "duplicate-names", "prefixes, 40", "suffixes, 25"):
            self.assertIn(word, shown)
        self.assertEqual([], [line for line in shown.splitlines() if len(line) > 80])
        self.assertNotIn("VIII", self.run_host("settings", "show", "prefixes").out)
        self.assertEqual(contract.SUFFIXES, self.run_host("settings", "show", "suffixes", "--json").json())

    def test_parts_of_names(self):
        for words, parts in ((["first"], ["first"]), (["last,first"], ["first", "last"]),
                             (["middle", "last"], ["middle", "last"]), (["first,middle", "last"], DEFAULTS["duplicateNameParts"])):
            self.run_host("settings", "set", "duplicate-names", *words)
            self.assertEqual(parts, self.settings()["duplicateNameParts"])
        self.run_host("settings", "remove", "duplicate-names", "middle")
        self.assertEqual(["first", "last"], self.settings()["duplicateNameParts"])
        self.run_host("settings", "add", "duplicate-names", "middle", "first")
        self.assertEqual(DEFAULTS["duplicateNameParts"], self.settings()["duplicateNameParts"])

    def test_refused_parts_change_nothing(self):
        for words in (["set", "duplicate-names", "surname"], ["set", "duplicate-names", ","],
                      ["remove", "duplicate-names", "first", "middle", "last"], ["add", "duplicate-names", "First"]):
            result = self.run_host("settings", *words, code=2)
            self.assertTrue(result.err.startswith("krcontacts: "))
        self.assertEqual(DEFAULTS, self.settings())

    def test_lists_are_set_added_to_removed_from_and_reset(self):
        for what in ("prefixes", "suffixes"):
            self.run_host("settings", "set", what, "Dr.", "Frau", "Dr.")
            self.assertEqual(["Dr.", "Frau"], self.settings()[what])
            self.run_host("settings", "add", what, "Herr", "Frau", "Prof. Dr.")
            self.assertEqual(["Dr.", "Frau", "Herr", "Prof. Dr."], self.settings()[what])
            self.run_host("settings", "remove", what, "Frau", "Prof. Dr.")
            self.assertEqual(["Dr.", "Herr"], self.settings()[what])
            self.run_host("settings", "reset", what)
            self.assertEqual(DEFAULTS, self.settings())

    def test_many_programs_at_once_lose_nothing(self):
        names = [f"Title{number}" for number in range(12)]
        running = [self.start_host("settings", "add", ("prefixes", "suffixes")[place % 2], name)
                   for place, name in enumerate(names)]
        for process in running:
            err = process.communicate(timeout=host.TIMEOUT)[1]
            self.assertEqual(0, process.returncode, err)
        self.assertEqual(sorted(contract.PREFIXES + names[::2]), sorted(self.settings()["prefixes"]))
        self.assertEqual(sorted(contract.SUFFIXES + names[1::2]), sorted(self.settings()["suffixes"]))

    def test_reset_of_everything(self):
        self.run_host("settings", "set", "duplicate-names", "last")
        self.run_host("settings", "set", "prefixes", "A")
        self.run_host("settings", "set", "suffixes", "B")
        self.assertEqual({"duplicateNameParts": ["last"], "prefixes": ["A"], "suffixes": ["B"]}, self.settings())
        self.run_host("settings", "reset")
        self.assertEqual(DEFAULTS, self.settings())

    def test_refused_values_change_nothing(self):
        for words in (["remove", "prefixes", "mr"], ["remove", "suffixes", "Jr", "nobody"], ["add", "prefixes", ""],
                      ["set", "titles", "x"], ["show", "titles"], ["reset", "titles"], ["import", "missing.json"]):
            result = self.run_host("settings", *words, code=2)
            self.assertTrue(result.err.startswith("krcontacts: "), result.err)
            self.assertEqual(1, result.err.count("\n"))
        self.assertEqual(DEFAULTS, self.settings())

    def test_a_scan_goes_by_the_lists(self):
        book = self.write("a.vcf", host.card("N:Doe;Jane;;Frau;", "FN:x", "NOTE:x"))
        scan = ("scan", "--json", "--issues", "unusual-title", book)
        self.assertEqual(1, len(self.run_host(*scan).json()["contexts"]))
        self.run_host("settings", "add", "prefixes", "Frau")
        self.assertEqual(0, len(self.run_host(*scan).json()["contexts"]))

    def test_export_and_import_carry_everything(self):
        self.run_host("settings", "set", "duplicate-names", "first,last")
        self.run_host("settings", "set", "prefixes", "Dr.", 'quote"d', "博士")
        document = self.run_host("settings", "export").out
        self.run_host("settings", "export", "kept.json")
        self.assertEqual(document, (self.folder / "kept.json").read_text(encoding="utf-8"))
        wanted = self.settings()
        self.assertEqual(wanted, json.loads(document))
        self.run_host("settings", "reset")
        self.run_host("settings", "import", "kept.json")
        self.assertEqual(wanted, self.settings())
        self.run_host("settings", "reset")
        self.run_host("settings", "import", "-", stdin=document.encode())
        self.assertEqual(wanted, self.settings())

    def test_import_takes_what_the_document_names(self):
        self.run_host("settings", "import", "-", stdin=b'{"suffixes": []}')
        self.assertEqual({**DEFAULTS, "suffixes": []}, self.settings())

    def test_damaged_documents_change_nothing(self):
        for document in (b"", b"{", b"[]", b"{}", b'{"prefixes": "Dr"}', b'{"prefixes": [1]}', b'{"prefixes": [""]}',
                         b'{"suffixes": ["x"], "colour": ["red"]}', b'{"suffixes": ["x"], "duplicateNameParts": []}',
                         b'{"suffixes": ["x"], "duplicateNameParts": ["surname"]}', b"[" * 100000, b'{"prefixes": ["\xff"]}'):
            result = self.run_host("settings", "import", "-", stdin=document, code=2)
            self.assertTrue(result.err.startswith("krcontacts: "), result.err)
            self.assertEqual(1, result.err.count("\n"))
        self.assertEqual(DEFAULTS, self.settings())

    def test_french_defaults_where_the_user_speaks_french(self):
        settings = self.run_host("settings", "--json", LC_ALL="fr_FR.UTF-8").json()
        self.assertEqual("1er 1re 2d 2de 2e 3e M. Mme Mlle Dr Pr Me Mgr no".split(), settings["prefixes"])
        self.assertEqual("etc. h s km min al I II III IV IX V VI VII VIII X".split(), settings["suffixes"])


if __name__ == "__main__":
    host.main()
