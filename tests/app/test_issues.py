#!/usr/bin/env python3
"""The issues command: the catalogue, and the choice of what a scan looks for."""
import plistlib

import host

FIXES = {
    "KRIssueDuplicateNames": "Edit Ignore",
    "Duplicate Info": "DeleteDuplicatePerson Ignore",
    "KRIssueIncompleteName": "Edit Ignore",
    "KRIssueBlankName": "Edit DeleteContact Ignore",
    "KRIssueInvalidCharacters": "Edit Ignore",
    "KRIssueDuplicatePhoneNumber": "DeleteDublicatProperty Ignore",
    "KRIssueDuplicateEmailAddress": "DeleteDublicatProperty Ignore",
    "KRIssueDuplicateAddress": "DeleteDublicatProperty Ignore",
    "KRIssuePhonesDuplicatedAmongMultipleContacts": "Edit Ignore",
    "KRIssueEmailsDuplicatedAmongMultipleContacts": "Edit Ignore",
    "KRIssueUnusualTitle": "AddSupport DeleteProperty Ignore",
    "KRIssueUnusualSuffix": "AddSupport DeleteProperty Ignore",
    "KRIssueSpacingInTheFirstName": "RemoveSpace Ignore",
    "KRIssueHasCompanyNameNoTitle": "Edit Ignore",
    "KRIssueNoteWithSpacingOnly": "Edit Ignore",
}
SHORT = {
    "KRHandleNameEdit": "edit",
    "KRHandleNameIgnore": "ignore",
    "KRHandleNameDeleteDuplicatePerson": "delete-duplicates",
    "KRHandleNameDeleteContact": "delete-contact",
    "KRHandleNameDeleteDublicatProperty": "delete-duplicate-values",
    "KRHandleNameDeleteProperty": "delete-field",
    "KRHandleNameAddSupport": "add-to-list",
    "KRHandleNameRemoveSpace": "remove-space",
}
MULTI_PERSON = {"KRIssueDuplicateNames", "Duplicate Info", "KRIssuePhonesDuplicatedAmongMultipleContacts",
                "KRIssueEmailsDuplicatedAmongMultipleContacts"}


class Issues(host.HostTest):
    def rows(self):
        return self.run_host("issues", "--json").json()["issues"]

    def used(self):
        return [row["issue"] for row in self.rows() if row["used"]]

    def test_catalogue_with_its_fixes(self):
        rows = self.rows()
        self.assertEqual(host.CATALOGUE, [row["issue"] for row in rows])
        self.assertEqual(list(host.ISSUES), [row["constant"] for row in rows])
        for row in rows:
            fixes = [f"KRHandleName{fix}" for fix in FIXES[row["issue"]].split()]
            self.assertEqual(fixes, [handle["name"] for handle in row["handles"]])
            self.assertEqual(row["issue"] in MULTI_PERSON, row["multiPerson"])
            for handle in row["handles"]:
                self.assertTrue(handle["title"])
                self.assertEqual(SHORT[handle["name"]], handle["shortName"])
            self.assertTrue(row["used"])
            self.assertTrue(row["displayName"])

    def test_list_for_people(self):
        text = self.run_host("issues").out
        rows = self.rows()
        blocks = text.split("[x] ")[1:]
        self.assertEqual(len(rows), len(blocks))
        for row, block in zip(rows, blocks):
            first, rest = block.split("\n", 1)
            self.assertTrue(first.startswith(row["displayName"]), first)
            self.assertTrue(first.endswith(" " + row["shortName"]), first)
            for handle in row["handles"]:
                self.assertIn(" ".join(handle["title"].split()) + f" ({handle['shortName']})", " ".join(rest.split()))
        for line in text.splitlines():
            self.assertLessEqual(len(line), 80)

    def test_use_and_drop_and_reset_are_kept(self):
        self.run_host("issues", "drop", "blank-name", "KRIssueUnusualTitle", "Duplicate Info")
        wanted = [name for name in host.CATALOGUE
                  if name not in ("KRIssueBlankName", "KRIssueUnusualTitle", "Duplicate Info")]
        self.assertEqual(wanted, self.used())
        self.assertIn("[ ] ", self.run_host("issues").out)
        shown = self.run_host("issues", "use", "unusual-title,duplicate-info").out
        self.assertIn("unusual-title", shown)
        self.assertEqual([name for name in host.CATALOGUE if name != "KRIssueBlankName"], self.used())
        self.run_host("issues", "drop", *host.ISSUES)
        self.assertEqual([], self.used())
        self.run_host("issues", "reset")
        self.assertEqual(host.CATALOGUE, self.used())

    def test_a_scan_looks_for_the_chosen_issues(self):
        self.run_host("issues", "drop", *host.ISSUES)
        self.run_host("issues", "use", "empty-note", "blank-name")
        book = self.write("a.vcf", host.card("FN:"))
        document = self.run_host("scan", "--json", book).json()
        self.assertEqual(["KRIssueBlankName", "KRIssueNoteWithSpacingOnly"], document["issues"])
        self.run_host("issues", "drop", *host.ISSUES)
        result = self.run_host("scan", book)
        self.assertIn("no issue is chosen", result.err)

    def test_every_name_of_an_issue_is_known(self):
        for row in self.rows():
            dashed = "".join("-" + letter.lower() if letter.isupper() else letter
                             for letter in row["constant"].removeprefix("KRIssue")).strip("-")
            for name in (row["issue"], row["constant"], row["shortName"], dashed, row["constant"].upper()):
                self.run_host("issues", "drop", *host.ISSUES)
                self.run_host("issues", "use", name)
                self.assertEqual([row["issue"]], self.used(), name)

    def test_unknown_names_are_refused_with_the_list(self):
        before = self.used()
        for verb in ("use", "drop"):
            for word in ("blank", "KRIssueNicknameWithSpacingOnly", "", ","):
                result = self.run_host("issues", verb, "empty-note", word, code=2 if word.strip(",") else 0)
                if word.strip(","):
                    self.assertIn("blank-name, ", result.err)
                    self.assertEqual(1, result.err.count("\n"))
            self.run_host("issues", "reset")
            self.run_host("issues", verb, "", code=2)
        self.assertEqual(before, self.used())

    def test_the_choice_is_kept_in_a_property_list(self):
        self.run_host("issues", "drop", "blank-name")
        lists = [plistlib.loads(content) for content in self.stored_files().values() if content.startswith(b"bplist")]
        stored = [each["KR_ISSUE_MANAGER_USERDEFAULT_KEY"] for each in lists
                  if "KR_ISSUE_MANAGER_USERDEFAULT_KEY" in each]
        archive = plistlib.loads(stored[0])
        self.assertIn("$objects", archive)
        self.assertIn("KRIssueIncompleteName", archive["$objects"])
        self.assertNotIn("KRIssueBlankName", archive["$objects"])

    def test_a_choice_that_cannot_be_kept_is_an_error(self):
        blocked = self.write("blocked", "a file where the home folder should be")
        result = self.run_host("issues", "drop", "blank-name", code=2, KRCONTACTS_HOME=str(blocked))
        self.assertTrue(result.err.startswith("krcontacts: "))

    def test_titles_are_french_where_the_user_speaks_french(self):
        english = [row["displayName"] for row in self.rows()]
        french = [row["displayName"]
                  for row in self.run_host("issues", "--json", LC_ALL="fr_FR.UTF-8").json()["issues"]]
        self.assertEqual("Exact duplicate contacts", french[1])
        self.assertEqual("Has company name but no title", french[13])
        self.assertNotEqual(english[3], french[3])


if __name__ == "__main__":
    host.main()
