"""An independent reading of an address book: what the eight single-field issues find in contacts, worked out here from
the rules alone, for comparison with what the program says."""
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


class Contact:
    """What a card means. A part that is absent is None, and never ""."""

    def __init__(self, uid):
        self.uid = uid
        self.first = self.last = self.middle = self.prefix = self.suffix = None
        self.company = self.job = self.note = None
        self.is_organization = False
        self.phones = []
        self.emails = []


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


def finding_of(issue, contact):
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
        if person and contact.prefix is not None and contact.prefix not in PREFIXES:
            return contact.prefix, f'The prefix "{contact.prefix}" of this Contact is invalid.'
    elif issue == "KRIssueUnusualSuffix":
        if person and contact.suffix is not None and contact.suffix not in SUFFIXES:
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
    else:
        raise AssertionError(issue)
    return None
