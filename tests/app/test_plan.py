#!/usr/bin/env python3
"""Plans: written, edited, and applied exactly; refused when the book has changed under a fix, and when they are no plans."""
import json

import host
import schema

PLAN = json.loads((host.ROOT / "docs/plan.schema.json").read_text(encoding="utf-8"))
FIX = json.loads((host.ROOT / "docs/fix.schema.json").read_text(encoding="utf-8"))


def namesake(phone, uid, *more):
    return host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", f"TEL:{phone}", *more, f"UID:{uid}")


def twin(uid):
    return host.card("N:Finch;Oliver;;;", "FN:Oliver Finch", "TEL:5", f"UID:{uid}")


PHONE = host.card("N:Comma;Carl;;;", "FN:Carl Comma", "TEL;TYPE=HOME:12,34", "TEL;TYPE=WORK;PREF=1:56", "X-KEPT:1",
                  "UID:carl")
FIRM = host.card("N:Firm;Fay;;;", "FN:Fay Firm", "ORG:Acme", "UID:fay")
SPACE = host.card("N:Bell;Mary Jane;;;", "FN:Mary Jane Bell", "UID:bell")


class Plan(host.HostTest):
    def setUp(self):
        super().setUp()
        self.book = self.write("book.vcf", namesake(1, "a") + namesake(2, "b") + namesake(3, "c") + twin("o1") +
                               twin("o2") + PHONE + FIRM + SPACE)

    def plan(self, *choices, book=None):
        words = [word for choice in choices for word in ("--apply", choice)]
        document = self.run_host("plan", book or self.book, *words).json()
        schema.check(document, PLAN, PLAN)
        return document

    def apply(self, plan, *words, code=0):
        text = plan if isinstance(plan, (str, bytes)) else json.dumps(plan)
        return self.run_host("apply", self.write("plan.json", text), *words, code=code)

    def refused(self, plan, *said):
        before, stored = self.book.read_bytes(), self.trash()
        result = self.apply(plan, code=2)
        self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
        self.assertLess(len(result.err), 1000)
        for each in ("plan.json", *said):
            self.assertIn(each, result.err)
        self.assertEqual((before, stored), (self.book.read_bytes(), self.trash()))

    def persons(self):
        return {person["id"]: person for person in self.run_host("show", "--json", self.book).json()["persons"]}

    def trash(self):
        return [person["id"] for person in self.run_host("trash", "list", "--json").json()["persons"]]

    def test_a_plan_does_what_fix_does(self):
        choices = ("exact-duplicates=delete-duplicates", "first-name-spacing=remove-space")
        start = self.book.read_bytes()
        words = [word for choice in choices for word in ("--apply", choice)]
        fixed = self.run_host("fix", self.book, *words, "--json").json()
        after = self.book.read_bytes()
        self.book.write_bytes(start)
        plan = self.plan(*choices)
        self.assertEqual(start, self.book.read_bytes())
        done = self.apply(plan, "--json").json()
        schema.check(done, FIX, FIX)
        self.assertEqual(after, self.book.read_bytes())
        self.assertEqual(fixed, done)
        self.assertEqual(["o2", "o2"], self.trash())

    def test_a_fix_that_was_dropped_is_not_applied(self):
        plan = self.plan("exact-duplicates=delete-duplicates", "first-name-spacing=remove-space")
        self.assertEqual(["exact-duplicates", "first-name-spacing"], [fix["issue"] for fix in plan["fixes"]])
        del plan["fixes"][0]
        out = self.apply(plan).out
        self.assertIn("1 finding fixed; 1 contact changed", out)
        self.assertEqual([], self.trash())
        self.assertEqual("MaryJane", self.persons()["bell"]["values"]["name"]["value"]["first"])

    def test_a_fix_that_is_named_twice_is_done_and_counted_once(self):
        plan = self.plan("first-name-spacing=remove-space", "exact-duplicates=delete-duplicates")
        space, twins = plan["fixes"]
        turned = json.loads(json.dumps(twins))
        turned["persons"].reverse()
        plan["fixes"] = [space, twins, space, turned]
        dry = self.apply(plan, "--dry-run").out
        self.assertEqual(1, dry.count("MaryJane"))
        out = self.apply(plan).out
        self.assertIn("1 finding fixed; 1 contact changed", out)
        self.assertNotIn("2 findings", out)
        self.assertIn("2 fixes of the plan were settled by others before", out)
        # Of two in another order the first one counts.
        self.assertEqual(["o2"], self.trash())
        self.assertEqual("MaryJane", self.persons()["bell"]["values"]["name"]["value"]["first"])

    def test_new_values_of_one_finding_may_stand_in_two_fixes(self):
        plan = self.plan("invalid-characters=edit")
        other = json.loads(json.dumps(plan["fixes"][0]))
        plan["fixes"][0]["values"] = {"phone": ["1234", "56"]}
        other["values"] = {"nickname": "Chuck"}
        plan["fixes"].append(other)
        out = self.apply(plan).out
        self.assertIn("(1)\n  1 finding fixed; 1 contact changed", out)
        values = self.persons()["carl"]["values"]
        self.assertEqual(["1234", "56"], [entry["value"] for entry in values["phone"]])
        self.assertEqual("Chuck", values["nickname"]["value"])

    def test_the_text_of_a_finding_may_be_left_out_where_the_fix_needs_none(self):
        plan = self.plan("invalid-characters=edit")
        del plan["fixes"][0]["info"]
        plan["fixes"][0]["values"] = {"phone": ["1234", "56"]}
        self.assertIn("1 finding fixed", self.apply(plan).out)
        title = self.write("title.vcf", host.card("N:Weiss;Anja;;Dipl.-Ing.;", "FN:Anja Weiss", "UID:weiss"))
        plan = self.plan("unusual-title=add-support", book=title)
        del plan["fixes"][0]["info"]
        self.assertIn('/fixes/0: there is no "info"', self.apply(plan, code=2).err)
        plan["fixes"][0]["handle"] = "ignore"
        self.assertIn("1 finding fixed", self.apply(plan).out)

    def test_a_copy_of_a_fix_with_a_stale_digest_is_refused(self):
        plan = self.plan("first-name-spacing=remove-space")
        copy = json.loads(json.dumps(plan["fixes"][0]))
        copy["persons"][0]["digest"] = "0" * 64
        plan["fixes"].append(copy)
        self.refused(plan, "/fixes/1", '"bell" has changed')

    def test_a_contact_that_was_taken_out_of_a_group_stays(self):
        plan = self.plan("duplicate-names=merge")
        (group,) = [fix for fix in plan["fixes"] if len(fix["persons"]) == 3]
        group["persons"] = [person for person in group["persons"] if person["id"] != "b"]
        plan["fixes"] = [group]
        self.apply(plan)
        persons = self.persons()
        self.assertIn("b", persons)
        self.assertEqual(["a", "c"], self.trash())
        (merged,) = [person for ID, person in persons.items() if person["showName"] == "Ann Barrow" and ID != "b"]
        self.assertEqual(["1", "3"], [entry["value"] for entry in merged["values"]["phone"]])

    def test_the_first_contact_named_comes_first(self):
        plan = self.plan("exact-duplicates=delete-duplicates")
        plan["fixes"][0]["persons"].reverse()
        self.apply(plan)
        self.assertEqual(["o1"], self.trash())

    def test_new_values_mend_what_only_editing_can(self):
        plan = self.plan("invalid-characters=edit", "company-no-title=edit")
        phone, title = plan["fixes"]
        self.assertEqual({"phone": ["12,34", "56"], "email": []}, phone["values"])
        self.assertEqual({"jobTitle": None}, title["values"])
        phone["values"]["phone"][0] = "1234"
        title["values"]["jobTitle"] = "Owner"
        before = self.persons()
        out = self.apply(plan, "--dry-run").out
        for line in ("12,34", "1234", "Owner"):
            self.assertIn(line, out)
        self.assertEqual(before, self.persons())
        done = self.apply(plan, "--json").json()
        self.assertEqual([1, 1], [fix["changed"] for fix in done["fixes"]])
        after = self.persons()
        self.assertEqual("Owner", after["fay"]["jobTitle"])
        before["carl"]["values"]["phone"][0]["value"] = "1234"
        self.assertEqual(before["carl"], after["carl"])
        self.assertIn("X-KEPT:1\r\n", self.book.read_bytes().decode())
        self.assertEqual({ID: person for ID, person in before.items() if ID not in ("fay", "carl")},
                         {ID: person for ID, person in after.items() if ID not in ("fay", "carl")})
        self.assertEqual([], self.plan("invalid-characters=edit", "company-no-title=edit")["fixes"])

    def test_values_that_were_not_edited_change_nothing(self):
        before = self.book.read_bytes()
        out = self.apply(self.plan("invalid-characters=edit", "company-no-title=edit")).out
        self.assertIn("nothing is changed by that", out)
        self.assertEqual(before, self.book.read_bytes())

    def test_an_entry_can_be_taken_away_and_a_name_be_set(self):
        plan = self.plan("invalid-characters=edit")
        plan["fixes"][0]["values"] = {"phone": [None, "56"], "name": {"first": "Charles"}, "nickname": "Chuck"}
        self.apply(plan)
        values = self.persons()["carl"]["values"]
        self.assertEqual(["56"], [entry["value"] for entry in values["phone"]])
        self.assertEqual({"first": "Charles", "middle": None, "last": "Comma"}, values["name"]["value"])
        self.assertEqual("Chuck", values["nickname"]["value"])

    def test_a_book_that_has_changed_under_a_fix_is_refused(self):
        plan = self.plan("duplicate-names=merge", "exact-duplicates=delete-duplicates")
        text = self.book.read_bytes().decode()
        self.write("book.vcf", text.replace("TEL:2", "TEL:22"))
        self.refused(plan, "/fixes/0 (duplicate-names, Ann Barrow)", '"b" has changed', "nothing is applied")
        self.write("book.vcf", text.replace(namesake(3, "c"), ""))
        self.refused(plan, "/fixes/0 (duplicate-names, Ann Barrow)", '"c" is not in the book')
        self.write("book.vcf", text.replace("Oliver", "Olive").replace("TEL:1\r\n", "TEL:111\r\n"))
        self.refused(plan, '"a" has changed', "likewise 2 other fixes")
        # Other contacts may change as they like.
        self.write("book.vcf", text.replace("ORG:Acme", "ORG:Other"))
        self.apply(plan)

    def test_undo_puts_back_what_a_plan_has_changed(self):
        before = self.book.read_bytes()
        self.apply(self.plan("exact-duplicates=delete-duplicates", "first-name-spacing=remove-space"))
        self.run_host("undo")
        self.assertEqual((before, []), (self.book.read_bytes(), self.trash()))

    def test_a_plan_applies_once(self):
        plan = self.plan("first-name-spacing=remove-space")
        self.apply(plan)
        self.refused(plan, "has changed")
        plan = self.plan("exact-duplicates=delete-duplicates")
        self.apply(plan)
        self.refused(plan, "is not in the book any more")

    def test_a_finding_that_settings_hide_is_not_found_any_more(self):
        self.book.write_text(host.card("N:Weiss;Anja;;Dipl.-Ing.;", "FN:Anja Weiss", "UID:weiss"))
        plan = self.plan("unusual-title=delete-field")
        self.run_host("settings", "add", "prefixes", "Dipl.-Ing.")
        self.refused(plan, "a scan does not find this any more")

    def test_a_fix_that_an_earlier_one_has_settled_is_passed_over(self):
        plan = self.plan("exact-duplicates=delete-duplicates", "shared-phone=merge")
        self.assertIn("1 fix of the plan was settled by others before", self.apply(plan).out)
        self.assertEqual(["o2"], self.trash())

    def test_a_group_can_be_merged_in_parts(self):
        self.book.write_text("".join(namesake(n, n) for n in "1234"))
        plan = self.plan("duplicate-names=merge")
        (fix,) = plan["fixes"]
        plan["fixes"] = [dict(fix, persons=fix["persons"][:2]), dict(fix, persons=fix["persons"][2:])]
        self.apply(plan)
        phones = [[entry["value"] for entry in person["values"]["phone"]] for person in self.persons().values()]
        self.assertEqual([["1", "2"], ["3", "4"]], phones)

    def test_a_plan_of_a_book_of_the_list_finds_it_again(self):
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.book, "--into", "Family")
        plan = self.plan("first-name-spacing=remove-space", book="Family")
        self.assertIn("1 contact changed", self.apply(plan).out)
        self.run_host("books", "remove", "Family")
        self.assertEqual(2, self.run_host("apply", self.folder / "plan.json", code=2).code)

    def test_a_plan_can_be_read_from_standard_input_and_for_another_book(self):
        plan = self.plan("first-name-spacing=remove-space")
        other = self.write("other.vcf", self.book.read_bytes())
        self.run_host("apply", "-", "--book", other, stdin=json.dumps(plan).encode())
        self.assertIn(b"MaryJane", other.read_bytes())
        self.assertNotIn(b"MaryJane", self.book.read_bytes())

    def test_an_empty_plan_is_one(self):
        plan = self.plan("unusual-suffix=ignore")
        self.assertEqual([], plan["fixes"])
        self.assertIn("There is no fix in the plan", self.apply(plan).out)

    def test_what_is_no_json_is_refused_with_its_place(self):
        for text, place in (("", ":1:1"), ("{", ":1:2"), ("{\n  \"plan\": 1,\n  x", ":3:3"), (b"\xff\xfe", ":1:1"),
                            ("[" * 100000, ":1:100001"), ('{"plan": "\\ud800"}', ":1:"), ("nul", ":1:4"),
                            ('{"plan": 1e999}', "number")):
            self.refused(text, place)
        self.refused("{\"a\":" * 50000 + "1" + "}" * 50000, "there is no \"plan\"")

    def test_what_stands_behind_the_document_or_twice_in_it_is_refused(self):
        text = json.dumps(self.plan("exact-duplicates=delete-duplicates"))
        for behind in ("\0", "\0garbage", "\n\0", " garbage", "{}"):
            self.refused(text + behind, f":{2 if behind[0] == chr(10) else 1}:", "no JSON document")
        self.refused(text[:-1] + ', "fixes": []}', '"fixes" stands twice')
        self.refused(text.replace('"persons"', '"issue": "blank-name", "persons"'), '"issue" stands twice')

    def test_long_and_odd_texts_of_a_plan_are_told_in_a_line_that_can_be_read(self):
        good = self.plan("exact-duplicates=delete-duplicates")
        for path, ID, said in (("/" + "very-long/" * 800 + "end.vcf", "x", ("/very-long", "…", "end.vcf: there is no")),
                               (None, "i" * 5000, ("iii…iii", "--book")), (None, "a\0b", ("a\\x00b", "--book")),
                               ("/a\0b.vcf", "x", ("/a\\x00b.vcf", "no such file"))):
            plan = {**good, "book": {"id": ID, "path": path}}
            err = self.apply(plan, code=2).err
            self.assertEqual(1, err.count("\n"), err)
            self.assertLess(len(err), 1000)
            for each in said:
                self.assertIn(each, err)
        good["fixes"][0]["persons"][0].update(name="Ann\0Lee", digest="")
        self.refused(good, "Ann\\x00Lee", "has changed")

    def test_what_is_no_plan_is_refused_with_its_place_and_reason(self):
        good = self.plan("exact-duplicates=delete-duplicates", "invalid-characters=edit")
        self.assertEqual(2, len(good["fixes"]))

        def edited(change):
            plan = json.loads(json.dumps(good))
            change(plan)
            return plan

        def put(*path):
            *steps, last, value = path

            def change(plan):
                for step in steps:
                    plan = plan[step]
                plan[last] = value
            return edited(change)

        for wrong in (1, "x", None, [], [good], {}, True):
            self.refused(wrong if not isinstance(wrong, str) else json.dumps(wrong), "the document")
        rows = (
            (put("plan", 2), "/plan", "version 1"), (put("plan", "1"), "/plan", "number"),
            (put("plan", True), "/plan", "number"), (put("more", 1), '"more" is not known'),
            (put("book", 1), "/book", "object"), (put("book", "id", 7), "/book/id", "text"),
            (put("fixes", {}), "/fixes", "list"), (put("fixes", 0, []), "/fixes/0", "object"),
            (put("fixes", 0, "issue", "nonsense"), "/fixes/0/issue", "nonsense"),
            (put("fixes", 0, "issue", "x" * 100000), "/fixes/0/issue", "no name"),
            (put("fixes", 0, "issue", "blank-name,exact-duplicates"), "/fixes/0/issue", "one issue"),
            (put("fixes", 0, "issue", None), "/fixes/0/issue", "text"),
            (put("fixes", 0, "handle", "remove-space"), "/fixes/0/handle", "it offers"),
            (put("fixes", 0, "handle", 3), "/fixes/0/handle", "text"),
            (put("fixes", 0, "info", []), "/fixes/0/info", "text"),
            (put("fixes", 0, "describe", 1), "/fixes/0/describe", "text"),
            (put("fixes", 0, "value", {}), "/fixes/0", '"value" is not known'),
            (put("fixes", 0, "values", {}), "/fixes/0/values", "edit"),
            (put("fixes", 0, "persons", []), "/fixes/0/persons", "two contacts"),
            (put("fixes", 0, "persons", good["fixes"][0]["persons"][:1]), "/fixes/0/persons", "two contacts"),
            (put("fixes", 0, "persons", good["fixes"][0]["persons"][:1] * 2), "/fixes/0/persons/1/id", "twice"),
            (put("fixes", 1, "persons", good["fixes"][0]["persons"]), "/fixes/1/persons", "one contact"),
            (put("fixes", 0, "persons", "a"), "/fixes/0/persons", "list"),
            (put("fixes", 0, "persons", 0, "id", None), "/fixes/0/persons/0/id", "text"),
            (put("fixes", 0, "persons", 0, "digest", 1), "/fixes/0/persons/0/digest", "text"),
            (put("fixes", 0, "persons", 0, "digest", ""), "/fixes/0 ", "changed"),
            (put("fixes", 0, "persons", 0, "name", {}), "/fixes/0/persons/0/name", "text"),
            (put("fixes", 1, "values", 1), "/fixes/1/values", "object"),
            (put("fixes", 1, "values", {"nonsense": 1}), "/fixes/1/values", '"nonsense" is no property'),
            (put("fixes", 1, "values", {"phone": "1"}), "/fixes/1/values", "list of texts"),
            (put("fixes", 1, "values", {"phone": [1]}), "/fixes/1/values", "list of texts"),
            (put("fixes", 1, "values", {"note": ["a"]}), "/fixes/1/values", "a text or null"),
            (put("fixes", 1, "values", {"name": "Ann"}), "/fixes/1/values", "object"),
            (put("fixes", 1, "values", {"name": {"nick": "A"}}), "/fixes/1/values", "first, middle and last"),
            (put("fixes", 1, "values", {"address": []}), "/fixes/1/values", "cannot set"),
            (put("fixes", 1, "values", {"phone": ["1"]}), "/fixes/1 ", "1 text, and the contact 2 entries"),
        )
        for plan, *said in rows:
            with self.subTest(said):
                self.refused(plan, *said)
        self.refused(edited(lambda plan: plan["fixes"][0].pop("persons")), "/fixes/0", 'no "persons"')
        self.apply(good, "--dry-run")

    def test_files_that_cannot_be_read_are_told(self):
        for file in ("nowhere.json", self.folder):
            result = self.run_host("apply", file, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
        self.assertEqual(2, self.run_host("plan", self.book, code=2).code)


if __name__ == "__main__":
    host.main()
