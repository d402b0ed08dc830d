"""SQLite: the five groupings as SQL over indexed tables in memory, through Python's own module, whose part in the time is
small: each statement fills a table.

    sqlite_groups.py FOLDER      the folder is what tables.py wrote
"""
import json
import pathlib
import re
import sqlite3
import sys
import time

ALL = "fn,n1,n2,n3,n4,n5,nickname,org,title,bday,note,url,categories,rev,showas,tels,emails,adrs"
TABLES = {"contact": "id integer primary key," + ALL, "phone": "cid integer,value", "email": "cid integer,value",
          "address": "cid integer,value"}
INDEXES = ["contact(fn)", "phone(value,cid)", "email(value,cid)", "phone(cid,value)", "email(cid,value)", "address(cid,value)"]


def statements():
    text = (pathlib.Path(__file__).parent / "groupings.sql").read_text()
    for piece in re.split(r"^--@ ", text, flags=re.M)[1:]:
        title, sql = piece.split("\n", 1)
        yield title.split(".")[0], sql.replace("{LIST}", "group_concat").replace("{ALL}", ALL)


def main(folder):
    database = sqlite3.connect(":memory:", isolation_level=None)
    database.execute("pragma temp_store=memory")
    for table, columns in TABLES.items():
        database.execute(f"create table {table}({columns})")
        marks = ",".join("?" * (columns.count(",") + 1))
        with open(f"{folder}/{table}.tsv", encoding="utf-8", newline="\n") as file:
            database.execute("begin")
            database.executemany(f"insert into {table} values({marks})", (line[:-1].split("\t") for line in file))
            database.execute("commit")
    for number, index in enumerate(INDEXES):
        database.execute(f"create index i{number} on {index}")
    result = {"contacts": database.execute("select count(*) from contact").fetchone()[0], "seconds": 0}
    best = {}
    for name, sql in statements():
        database.execute("drop table if exists r")
        start = time.perf_counter()
        database.execute("create temp table r as " + sql)
        best[name] = min(time.perf_counter() - start, best.get(name, float("inf")))
    result.update({name + "_seconds": seconds for name, seconds in best.items()})
    result["seconds"] = sum(best.values())
    print(json.dumps(result))


main(sys.argv[1])
