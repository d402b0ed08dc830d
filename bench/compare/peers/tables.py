"""The contacts of a generated book as tab-separated tables for the databases; values are exact text.

    tables.py contacts.vcf FOLDER
"""
import contextlib
import os
import sys

SINGLE = ["FN", "N", "NICKNAME", "ORG", "TITLE", "BDAY", "NOTE", "URL", "CATEGORIES", "REV", "X-ABShowAs"]
LISTS = {"TEL": "phone", "EMAIL": "email", "ADR": "address"}


def unfolded(file):
    line = None
    for raw in file:
        raw = raw.rstrip("\r\n")
        if raw[:1] == " ":
            line += raw[1:]
            continue
        if line is not None:
            yield line
        line = raw
    if line is not None:
        yield line


def contacts(file):
    """Pairs of the single values by name and the lists by name."""
    single, lists = {}, {}
    for line in unfolded(file):
        name, _, value = line.partition(":")
        name = name.partition(";")[0]
        name = name.partition(".")[2] or name
        if name == "BEGIN":
            single, lists = {}, {list_name: [] for list_name in LISTS}
        elif name == "END":
            yield single, lists
        elif name in LISTS:
            lists[name].append(value)
        else:
            single[name] = value


def main(source, folder):
    os.makedirs(folder, exist_ok=True)
    with contextlib.ExitStack() as stack:
        def table(name):
            return stack.enter_context(open(os.path.join(folder, name + ".tsv"), "w", encoding="utf-8", newline="\n"))

        people = table("contact")
        tables = {name: table(table_name) for name, table_name in LISTS.items()}
        file = stack.enter_context(open(source, encoding="utf-8", newline="\n"))
        for number, (single, lists) in enumerate(contacts(file), 1):
            parts = (single.get("N", "") + ";;;;").split(";")[:5]
            values = [single.get("FN", ""), *parts, *(single.get(name, "") for name in SINGLE[2:])]
            values += ["|".join(lists[name]) for name in LISTS]
            people.write("\t".join([str(number), *values]) + "\n")
            for name, texts in lists.items():
                tables[name].writelines(f"{number}\t{text}\n" for text in texts)


main(*sys.argv[1:])
