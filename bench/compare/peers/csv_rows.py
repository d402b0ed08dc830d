"""Python's csv module: a file to a list of rows. Its collector of cycles is off: walking the growing list again and again
would double the time.

    csv_rows.py FILE
"""
import csv
import gc
import json
import os
import sys
import time

gc.disable()
start = time.perf_counter()
with open(sys.argv[1], encoding="utf-8", newline="") as file:
    rows = list(csv.reader(file))
seconds = time.perf_counter() - start
print(json.dumps({"seconds": seconds, "bytes": os.path.getsize(sys.argv[1]), "contacts": len(rows) - 1,
                  "cells": sum(map(len, rows))}), flush=True)
os._exit(0)
