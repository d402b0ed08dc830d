"""An independent reading of an address book: what the issues of the catalogue find in contacts, worked out here from the
rules alone, for comparison with what the program says."""
import functools
import re

import host

PREFIXES = ("1LT 1ST 2LT 2ND 3RD Adm Admiral Cardinal Capt Captain CDR Chief Col Colonel Count Cpt Doctor Dr Gen General "
            "LCDR Lord Lt LTC LTG LTJG Maj Major MG Mr Mrs Ms Pastor Prof Professor Rep Reverend Sen Senator Sir").split()
SUFFIXES = "2nd 3rd 4th 5th 6th BA DDS ESQ I II III IV IX Jr Junior MA MD MS PhD Sr V VI VII VIII X".split()

# The issues that look at one field of one contact and that the catalogue offers.
SINGLE_FIELD = ("KRIssueIncompleteName", "KRIssueBlankName", "KRIssueInvalidCharacters", "KRIssueUnusualTitle",
                "KRIssueUnusualSuffix", "KRIssueSpacingInTheFirstName", "KRIssueHasCompanyNameNoTitle",
                "KRIssueNoteWithSpacingOnly")
# Those about values that one contact holds twice.
REPEATED = ("KRIssueDuplicatePhoneNumber", "KRIssueDuplicateEmailAddress", "KRIssueDuplicateAddress")
# Those about several contacts at once.
AMONG = ("KRIssueDuplicateNames", "Duplicate Info", "KRIssuePhonesDuplicatedAmongMultipleContacts",
         "KRIssueEmailsDuplicatedAmongMultipleContacts")


class Contact:
    """What a card means. A part that is absent is None, and never ""."""

    def __init__(self, uid):
        self.uid = uid
        self.first = self.last = self.middle = self.prefix = self.suffix = None
        self.company = self.department = self.job = self.note = None
        self.is_organization = False
        # Label and value of each entry, in the card's order.
        self.labelled_phones = []
        self.labelled_emails = []
        self.labelled_addresses = []

    @property
    def phones(self):
        return [value for _, value in self.labelled_phones]

    @property
    def emails(self):
        return [value for _, value in self.labelled_emails]

    @property
    def addresses(self):
        return [value for _, value in self.labelled_addresses]

    def everything(self):
        """All that the contact says, for equality."""
        return (self.first, self.middle, self.last, self.prefix, self.suffix, self.company, self.department, self.job,
                self.note, self.is_organization, tuple(self.labelled_phones), tuple(self.labelled_emails),
                tuple(self.labelled_addresses))


@functools.cache
def localized(key):
    """The English text of a key, read from the string table itself."""
    table = (host.ROOT / "resources/en.lproj/Localizable.strings").read_text(encoding="utf-8")
    found = re.search(rf'^"{re.escape(key)}"\s*=\s*"((?:[^"\\]|\\.)*)"\s*;', table, re.M)
    assert found, key
    return re.sub(r"\\(.)", r"\1", found[1])


def phone_is_valid(phone):
    """Only the low byte of every UTF-16 unit counts."""
    low_bytes = phone.encode("utf-16-le")[0::2]
    return all(byte in b"0123456789 ()+-\xa0" for byte in low_bytes)


def invalid_sentence(phones, emails):
    text = "This Contact's "
    if phones:
        text += "phone number " + ", ".join(f'"{each}"' for each in phones)
    if emails:
        text += (" and " if phones else "") + "email address " + "、".join(f'"{each}"' for each in emails)
    return text + " includes invalid characters."


def repeated(values):
    """The values that occur more than once, each once, in the order in which they are repeated."""
    seen = set()
    found = []
    for value in values:
        if value in seen and value not in found:
            found.append(value)
        seen.add(value)
    return found


def finding_of(issue, contact, prefixes=PREFIXES, suffixes=SUFFIXES):
    """(info, sentence) when the issue finds something in the contact, else None."""
    person = not contact.is_organization
    if issue == "KRIssueIncompleteName":
        if person and (contact.first is None) != (contact.last is None):
            return None, localized("KR_Issue_Info_IncompleteName")
    elif issue == "KRIssueBlankName":
        if (contact.first is None and contact.last is None) if person else contact.company is None:
            return None, localized("KR_Issue_Info_BlankName")
    elif issue == "KRIssueInvalidCharacters":
        emails = [each for each in contact.emails if "@" not in each]
        phones = [each for each in contact.phones if not phone_is_valid(each)]
        info = {key: values for key, values in (("email", emails), ("phone", phones)) if values}
        if info:
            return info, invalid_sentence(phones, emails)
    elif issue == "KRIssueUnusualTitle":
        if person and contact.prefix is not None and contact.prefix not in prefixes:
            return contact.prefix, f'The prefix "{contact.prefix}" of this Contact is invalid.'
    elif issue == "KRIssueUnusualSuffix":
        if person and contact.suffix is not None and contact.suffix not in suffixes:
            return contact.suffix, f'The suffix "{contact.suffix}" of this Contact is invalid.'
    elif issue == "KRIssueSpacingInTheFirstName":
        if person and contact.first is not None and " " in contact.first:
            return None, "This Contact's first name has blank spaces."
    elif issue == "KRIssueHasCompanyNameNoTitle":
        if person and contact.company is not None and contact.job is None:
            return None, "This Contact has company name, but haven't set a job title. "
    elif issue == "KRIssueNoteWithSpacingOnly":
        if contact.note is None:
            return None, "This Contact's notes is empty."
    elif issue == "KRIssueDuplicatePhoneNumber":
        if repeated(contact.phones):
            return repeated(contact.phones), "This Contact has duplicate phone numbers."
    elif issue == "KRIssueDuplicateEmailAddress":
        if repeated(contact.emails):
            return None, "This Contact has duplicate email addresses."
    elif issue == "KRIssueDuplicateAddress":
        if repeated(contact.addresses):
            return None, "This Contact has duplicate addresses."
    else:
        raise AssertionError(issue)
    return None


def name_of(contact, setting):
    """What is compared of a contact's name; None for nothing. The setting has a bit for first, middle and last names."""
    if contact.is_organization:
        return None if contact.company is None else ("organization", contact.company)
    parts = [(bit, part) for bit, part in ((1, contact.first), (2, contact.middle), (4, contact.last))
             if setting & bit and part is not None]
    return ("person", *parts) if parts else None


def gathered(pairs):
    """The groups of two or more under their keys, in the order in which the keys were met; no place twice."""
    groups = {}
    for key, place in pairs:
        places = groups.setdefault(key, [])
        if place not in places:
            places.append(place)
    return {key: places for key, places in groups.items() if len(places) > 1}


def groups_of(issue, contacts, setting=7):
    """[(places, info, sentence)] for an issue about several contacts at once."""
    numbered = list(enumerate(contacts))
    if issue == "KRIssueDuplicateNames":
        names = [(name_of(contact, setting), place) for place, contact in numbered]
        found = gathered((name, place) for name, place in names if name is not None)
        return [(places, None, localized("KR_Issue_Info_Duplicatecontacts")) for places in found.values()]
    if issue == "Duplicate Info":
        found = gathered((contact.everything(), place) for place, contact in numbered)
        return [(places, None, "Contacts in this list have duplicates in all fields.") for places in found.values()]
    if issue == "KRIssuePhonesDuplicatedAmongMultipleContacts":
        words, values = "phone number", "phones"
    else:
        words, values = "email address", "emails"
    found = gathered(((contact.is_organization, value), place) for place, contact in numbered
                     for value in getattr(contact, values))
    return [(places, value, f'Contacts in this list have the same {words} "{value}"')
            for (_, value), places in found.items()]
