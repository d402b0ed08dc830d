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
EMAILS = ["a@b.example", "A@b.example", "á@b.example", "bob", "a@@b", "@", "two at signs@x@y", "no-at.example", "ü@ö.example", " ", "who, me"]
# Shared by two or three contacts each, in a book of two thousand.
NUMBERS = [f"+44 7700 {900000 + each}" for each in range(900)]
MAILBOXES = [f"box{each}@example.org" for each in range(500)]
ADDRESSES = [";;1 Main Road;Exeter;;EX1 1AA;United Kingdom", ";;1 Main Road;Exeter;;EX1 1AA;", ";;1 main road;Exeter;;EX1 1AA;",
             ";Flat 2;1 Main Road;Exeter;;EX1 1AA;", ";;Hauptstraße 5;Köln;;50667;Deutschland", "PO 5;;;Lyon;;69001;France",
             ";;中山路1号;上海;;200001;中国", ";;7 Mill\\, Road;Cambridge;;;"]
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


def entry_lines(contact, dice):
    """The lines of phones, e-mails and addresses, and what each means: the list that it belongs to, its label and its
    value."""
    lines = []

    def add(values, start, label, value, text):
        lines.append((start + text, (values, label, value)))

    def add_phone(phone):
        start, label = dice.choice((("TEL:", None), ("TEL;TYPE=CELL:", "mobile"), ("item1.TEL;TYPE=HOME,VOICE:", "home")))
        add(contact.labelled_phones, start, label, phone, escaped(phone))

    def add_email(email):
        start, label = dice.choice((("EMAIL:", None), ("EMAIL;TYPE=INTERNET:", None), ("EMAIL;TYPE=WORK:", "work")))
        add(contact.labelled_emails, start, label, email, escaped(email))

    def add_address(address):
        start, label = dice.choice((("ADR:", None), ("ADR;TYPE=HOME:", "home"), ("ADR;TYPE=WORK:", "work")))
        add(contact.labelled_addresses, start, label, address, address)

    for add_one, pools, counts in ((add_phone, (PHONES, NUMBERS), (0, 1, 1, 2, 3)),
                                   (add_email, (EMAILS, MAILBOXES), (0, 0, 1, 1, 2)),
                                   (add_address, (ADDRESSES, ADDRESSES), (0, 0, 0, 1, 2))):
        values = [dice.choice(dice.choice(pools)) for _ in range(dice.choice(counts))]
        if values and dice.random() < 0.12:
            values.append(dice.choice(values))
        for value in values:
            add_one(value)
    return lines


def contact_lines(contact, dice):
    """All lines of a contact but its identifier; those of entries with what they mean, others with None."""
    lines = []
    if dice.random() < 0.5:
        contact.company = dice.choice(COMPANIES + FULL)
        department = dice.choice(("", "Department", ""))
        lines.append("ORG:" + escaped(contact.company) + dice.choice(("", ";" if not department else "")) +
                     (";" + department if department else ""))
        contact.department = department or None
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
    entries = entry_lines(contact, dice)
    if dice.random() < 0.1:
        lines.append("TEL;TYPE=WORK:")
    if dice.random() < 0.1:
        lines.append("EMAIL:")
    lines += name_lines(contact, dice)
    return [(line, None) for line in lines] + entries


def card_of(contact, lines, dice):
    """The card of the lines in a random order, which is the order of the contact's values."""
    lines = [*lines, (f"UID:{contact.uid}", None)]
    if dice.random() < 0.2:
        lines.append(("X-UNKNOWN;P=1:whatever\\, you like", None))
    dice.shuffle(lines)
    for _, meaning in lines:
        if meaning is not None:
            values, label, value = meaning
            values.append((label, value))
    text = "\r\n".join(folded(line, dice) for line in ["BEGIN:VCARD", "VERSION:3.0", *(line for line, _ in lines), "END:VCARD"])
    return text + "\r\n"


def copied(index, source, lines):
    """A contact like another one, and its lines, which fill its own lists."""
    contact = contract.Contact(f"random-{index}")
    for name in ("first", "last", "middle", "prefix", "suffix", "company", "department", "job", "note", "is_organization"):
        setattr(contact, name, getattr(source, name))
    own = {id(source.labelled_phones): contact.labelled_phones, id(source.labelled_emails): contact.labelled_emails,
           id(source.labelled_addresses): contact.labelled_addresses}
    return contact, [(line, meaning and (own[id(meaning[0])], *meaning[1:])) for line, meaning in lines]


def book(count, seed):
    """The text of a vCard file, and its contacts in order. Some contacts are copies of earlier ones, whose values often
    come in another order."""
    dice = random.Random(seed)
    made = []
    text = ""
    for index in range(count):
        if made and dice.random() < 0.1:
            contact, lines = copied(index, *dice.choice(made))
        else:
            contact = contract.Contact(f"random-{index}")
            contact.is_organization = dice.random() < 0.15
            lines = contact_lines(contact, dice)
        text += card_of(contact, lines, dice)
        made.append((contact, lines))
    return text, [contact for contact, _ in made]
