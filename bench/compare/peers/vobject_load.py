"""python3-vobject: a file to a list of components; names, phones, e-mails and addresses of each are read once.

    vobject_load.py FILE
"""
import json
import os
import sys
import time

import vobject

start = time.perf_counter()
with open(sys.argv[1], encoding="utf-8", newline="") as file:
    cards = list(vobject.readComponents(file.read()))
chars = 0
counts = {"tel": 0, "email": 0, "adr": 0}
for card in cards:
    chars += len(card.fn.value) + len(card.n.value.given) + len(card.n.value.family)
    for name in counts:
        for line in card.contents.get(name, ()):
            counts[name] += 1
            chars += len(line.value.street if name == "adr" else line.value)
seconds = time.perf_counter() - start
print(json.dumps({"seconds": seconds, "bytes": os.path.getsize(sys.argv[1]), "contacts": len(cards), "phones": counts["tel"],
                  "emails": counts["email"], "addresses": counts["adr"], "chars": chars}), flush=True)
os._exit(0)
