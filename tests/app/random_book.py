"""Random vCard 3.0 books, with what each card means."""
import random

import contract

FIRST = ["Ann", "Bob", "zoe", "Mary Ann", " Lee", "Kim ", "José", "Łukasz", "明", "さくら", "Ann-Marie", "d'Arc", "Σοφία",
         "O\\Neil", "a,b", "x;y", "Jean  Luc", "no\u00a0break", "Иван", "A"]
LAST = ["Smith", "smith", "de la Cruz", "王", "O'Hara", "Müller", "Nguyễn", "Zimmer; Sons", "Back\\slash", "Ng", "ßtrauß"]
PREFIXES = ["Dr", "Dr.", "dr", "Mr", "Frau", "1LT", "Prof", "Prof. Dr.", " ", "Sir", "LTC", "ltc"]
SUFFIXES = ["Jr", "Jr.", "III", "iii", "PhD", "Ph.D.", "X", "Esq", "ESQ", " V"]
COMPANIES = ["Acme", "Ärzte & Co", "Semi; colon", "Comma, Inc.", " ", "株式会社"]
PHONES = ["+1 (555) 123-4567", "555.1234", "12a", "x9", "0800\u00a0123", "12丰3", "１２３", "+49-30-12", " ", "call me",
          "#31#", "123*45", "12\U0001ac30", "📞123", "(0)30", "5,6", "5;6"]
EMAILS = ["a@b.example", "bob", "a@@b", "@", "two at signs@x@y", "no-at.example", "ü@ö.example", " ", "who, me"]
NOTES = ["hello", " ", "   ", "two\nlines", "semi; comma, back\\slash", "long " * 40, "終わり" * 40]
FULL = ["Solo", "Two Words", "Three Word Name", "One Two Three Four", "Ümläut Name"]


def escaped(text):
    return text.replace("\\", "\\\\").replace("\n", "\\n").replace(",", "\\,").replace(";", "\\;")


def folded(line, dice):
    """The line in pieces of at most 75 bytes, sometimes far less; never inside a character."""
    limit = dice.choice((75, 75, 75, 30))
    pieces = []
    piece = ""
    for char in line:
        if len((piece + char).encode()) > limit:
            pieces.append(piece)
            piece = " "
        piece += char
    return "\r\n".join([*pieces, piece])


def name_lines(contact, dice):
    """N and FN, in one of the ways that cards have; sets what they mean."""
    full = dice.choice(FULL)
    parts = [dice.choice(LAST) if dice.random() < 0.75 else None, dice.choice(FIRST) if dice.random() < 0.75 else None,
             dice.choice(FIRST) if dice.random() < 0.2 else None, dice.choice(PREFIXES) if dice.random() < 0.3 else None,
             dice.choice(SUFFIXES) if dice.random() < 0.25 else None]
    has_n = dice.random() < 0.85
    if has_n and dice.random() < 0.15:
        parts = [None] * 5
    lines = [f"FN:{escaped(full)}"]
    if has_n:
        lines.insert(dice.randrange(2), "N:" + ";".join(escaped(part or "") for part in parts))
    if has_n and any(parts):
        contact.last, contact.first, contact.middle, contact.prefix, contact.suffix = parts
    elif not contact.is_organization and full != contact.company:
        words = full.split(" ")
        contact.first = words[0]
        if len(words) == 2:
            contact.last = words[1]
        elif len(words) > 2:
            contact.middle, contact.last = words[1], " ".join(words[2:])
    if contact.is_organization and contact.company is None:
        contact.company = full
    return lines


def card_and_contact(index, dice):
    contact = contract.Contact(f"random-{index}")
    contact.is_organization = dice.random() < 0.15
    lines = []
    meaning = {}  # line -> the list that its value belongs to, and the value
    if dice.random() < 0.5:
        contact.company = dice.choice(COMPANIES + FULL)
        lines.append("ORG:" + escaped(contact.company) + dice.choice(("", ";Department", ";")))
    if dice.random() < 0.3:
        contact.job = dice.choice(("Boss", " ", "Chef; cook"))
        lines.append("TITLE:" + escaped(contact.job))
    elif dice.random() < 0.2:
        lines.append("TITLE:")
    if dice.random() < 0.6:
        contact.note = dice.choice(NOTES)
        lines.append("NOTE:" + escaped(contact.note))
    elif dice.random() < 0.3:
        lines.append("NOTE:")
    if contact.is_organization:
        lines.append("X-ABShowAs:COMPANY")
    for _ in range(dice.choice((0, 1, 1, 2, 3))):
        phone = dice.choice(PHONES)
        lines.append(dice.choice(("TEL:", "TEL;TYPE=CELL:", "item1.TEL;TYPE=HOME,VOICE:")) + escaped(phone))
        meaning[lines[-1]] = (contact.phones, phone)
    if dice.random() < 0.1:
        lines.append("TEL;TYPE=WORK:")
    for _ in range(dice.choice((0, 0, 1, 1, 2))):
        email = dice.choice(EMAILS)
        lines.append(dice.choice(("EMAIL:", "EMAIL;TYPE=INTERNET:")) + escaped(email))
        meaning[lines[-1]] = (contact.emails, email)
    if dice.random() < 0.1:
        lines.append("EMAIL:")
    lines += name_lines(contact, dice)
    lines.append(f"UID:{contact.uid}")
    if dice.random() < 0.2:
        lines.append("X-UNKNOWN;P=1:whatever\\, you like")
    dice.shuffle(lines)
    for line in lines:
        if line in meaning:
            values, value = meaning[line]
            values.append(value)
    text = "\r\n".join(folded(line, dice) for line in ["BEGIN:VCARD", "VERSION:3.0", *lines, "END:VCARD"])
    return text + "\r\n", contact


def book(count, seed):
    """The text of a vCard file, and its contacts in order."""
    dice = random.Random(seed)
    pairs = [card_and_contact(index, dice) for index in range(count)]
    return "".join(text for text, _ in pairs), [contact for _, contact in pairs]
