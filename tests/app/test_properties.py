#!/usr/bin/env python3
"""The properties command: the standard properties, and the fields of an address."""
import host

# Constant -> name, valueType, subValueType, for the properties that the engine addresses by name.
NAMED = {
    "KRProPertyName": ("name", 5, 0),
    "KRProPertyNickname": ("nickname", 0, 0),
    "KRProPertyTitle": ("title", 0, 0),
    "KRProPertySuffix": ("suffix", 0, 0),
    "KRProPertyCompany": ("company", 0, 0),
    "KRProPertyJobTitle": ("jobTitle", 0, 0),
    "KRProPertyIsOrganization": ("isOrganization", 0, 0),
    "KRProPertyNote": ("note", 0, 0),
    "KRProPertyBirthday": ("birthday", 3, 0),
    "KRProPertyTags": ("tags", 10, 0),
    "KRProPertyThumbnail": ("thumbnail", 11, 0),
    "KRProPertyPhone": ("phone", 12, 6),
    "KRProPertyEmail": ("email", 12, 7),
    "KRProPertyAddress": ("address", 12, 9),
    "KRProPertyInstantMessage": ("instantMessage", 12, 13),
    "KRProPertyOther": ("other", 12, 0),
}


class Properties(host.HostTest):
    def test_document_has_the_members_in_order(self):
        document = self.run_host("properties", "--json").json()
        self.assertEqual(["properties", "addressFields", "countryCode"], list(document))
        for row in document["properties"]:
            self.assertEqual(["constant", "name", "displayName", "valueType", "subValueType"], list(row))
            self.assertTrue(row["displayName"])
            self.assertEqual(row["valueType"] == 12 or row["subValueType"] == 0, True)

    def test_named_properties_keep_their_names_and_types(self):
        rows = {row["constant"]: row for row in self.run_host("properties", "--json").json()["properties"]}
        for constant, expected in NAMED.items():
            row = rows[constant]
            self.assertEqual(expected, (row["name"], row["valueType"], row["subValueType"]), constant)

    def test_names_and_display_names_are_distinct(self):
        rows = self.run_host("properties", "--json").json()["properties"]
        for member in ("constant", "name", "displayName"):
            values = [row[member].lower() for row in rows]
            self.assertEqual(len(values), len(set(values)), member)

    def test_people_are_shown_the_headings_of_common_sheets(self):
        rows = {row["name"]: row["displayName"] for row in self.run_host("properties", "--json").json()["properties"]}
        self.assertEqual(("Prefix", "Job Title", "E-mail"), (rows["title"], rows["jobTitle"], rows["email"]))

    def test_phone_email_and_address_come_before_company(self):
        names = [row["name"] for row in self.run_host("properties", "--json").json()["properties"]]
        for each in ("phone", "email", "address"):
            self.assertLess(names.index(each), names.index("company"))

    def test_address_fields_follow_the_country(self):
        def ask(locale):
            document = self.run_host("properties", "--json", LC_ALL=locale).json()
            return document["countryCode"], document["addressFields"]

        germany, german = ask("de_DE.UTF-8")
        america, american = ask("en_US.UTF-8")
        japan, japanese = ask("ja_JP.UTF-8")
        self.assertEqual(("DE", "US", "JP"), (germany, america, japan))
        self.assertEqual(sorted(german), sorted(american))
        self.assertLess(german.index("postalCode"), german.index("city"))
        self.assertLess(american.index("city"), american.index("postalCode"))
        self.assertLess(japanese.index("city"), japanese.index("street"))

    def test_table_shows_the_same_rows(self):
        rows = self.run_host("properties", "--json").json()["properties"]
        shown = self.run_host("properties").out.splitlines()
        for row, line in zip(rows, shown[2:]):
            self.assertTrue(line.startswith(row["displayName"]), line)
            self.assertIn(row["name"], line)
            self.assertLessEqual(len(line), 80)

    def test_french_names_where_the_user_speaks_french(self):
        rows = {row["name"]: row["displayName"]
                for row in self.run_host("properties", "--json", LC_ALL="fr_FR.UTF-8").json()["properties"]}
        self.assertNotEqual("Name", rows["name"])


if __name__ == "__main__":
    host.main()
