#!/usr/bin/env python3
"""Another program on the same desktop, for the tests: what it does goes through the service's own Python binding.

    desktop_peer.py dump                      every card of the built-in address book, as a JSON list
    desktop_peer.py add FILE                  adds the card in the file
    desktop_peer.py replace UID OLD NEW       puts NEW in the place of OLD in the card of that identifier
    desktop_peer.py remove UID
    desktop_peer.py new-book NAME             adds an address book to the user's registry; prints its identifier
    desktop_peer.py disable-book ID           switches one off
    desktop_peer.py remove-book ID
"""
import json
import sys

import gi

gi.require_version("EBook", "1.2")
gi.require_version("EBookContacts", "1.2")
gi.require_version("EDataServer", "1.2")
from gi.repository import EBook, EBookContacts, EDataServer  # noqa: E402

NO_WAITING = 0xFFFFFFFF
EVERYTHING = '(contains "x-evolution-any-field" "")'


def book(registry):
    return EBook.BookClient.connect_sync(registry.ref_builtin_address_book(), NO_WAITING, None)


def text(contact):
    return EBookContacts.VCard.to_string(contact, EBookContacts.VCardFormat(1))


def dump(registry):
    print(json.dumps([text(contact) for contact in book(registry).get_contacts_sync(EVERYTHING, None)[1]]))


def add(registry, path):
    with open(path, encoding="utf-8", newline="") as file:
        book(registry).add_contact_sync(EBookContacts.Contact.new_from_vcard(file.read()), 0, None)


def replace(registry, identifier, old, new):
    client = book(registry)
    card = text(client.get_contact_sync(identifier, None)[1])
    assert old in card, card
    client.modify_contact_sync(EBookContacts.Contact.new_from_vcard(card.replace(old, new)), 0, None)


def remove(registry, identifier):
    book(registry).remove_contact_by_uid_sync(identifier, 0, None)


def new_book(registry, name):
    source = EDataServer.Source.new(None, None)
    source.set_display_name(name)
    source.set_parent("local-stub")
    source.get_extension(EDataServer.SOURCE_EXTENSION_ADDRESS_BOOK).set_backend_name("local")
    registry.commit_source_sync(source, None)
    print(source.get_uid())


def disable_book(registry, identifier):
    source = registry.ref_source(identifier)
    source.set_enabled(False)
    registry.commit_source_sync(source, None)


def remove_book(registry, identifier):
    registry.ref_source(identifier).remove_sync(None)


COMMANDS = {"dump": dump, "add": add, "replace": replace, "remove": remove, "new-book": new_book,
            "disable-book": disable_book, "remove-book": remove_book}

if __name__ == "__main__":
    COMMANDS[sys.argv[1]](EDataServer.SourceRegistry.new_sync(None), *sys.argv[2:])
