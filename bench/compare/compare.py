"""Measures the programs of the comparison side by side and prints the tables; bench/compare/run builds them and calls this.

Every measurement is a process of its own on one core (peers that say two threads have two). Rounds are interleaved: each
round runs every program once, so that a busy minute of the machine meets all of them. Figures are medians.
"""
import argparse
import dataclasses
import json
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent))

import chart  # noqa: E402
from measuring import IdleMemory, end_saying, measured, print_table, say  # noqa: E402

LOWER = "lower bound"
OURS = "krcontacts"
GROUPINGS = ["same_name", "shared_phone", "shared_email", "exact", "in_contact"]
SLOW = 100_000  # contacts that the slowest peers get, which need minutes for more


@dataclasses.dataclass
class Job:
    """One program at one kind of work."""
    work: str
    name: str
    command: list
    cores: int = 1
    runs: list = dataclasses.field(default_factory=list)

    def __getitem__(self, key):
        return statistics.median(run[key] for run in self.runs)


@dataclasses.dataclass
class Target:
    """What a ratio of two medians has to be at most (or at least)."""
    work: str
    value: float
    limit: float
    unit: str = "times"
    at_least: bool = False

    def is_met(self):
        return self.value >= self.limit if self.at_least else self.value <= self.limit

    def line(self):
        bound = ("at least " if self.at_least else "at most ") + f"{self.limit:g}"
        digits = 0 if self.unit == "bytes" else 2
        verdict = "met" if self.is_met() else "missed by %.*f" % (digits, abs(self.value - self.limit))
        return self.work, f"{self.value:.{digits}f} {self.unit}", bound, verdict


def generate(count, folder, *words):
    folder.mkdir(exist_ok=True)
    subprocess.run([sys.executable, HERE.parent / "gen_contacts.py", "--count", str(count), "--seed", "1", "--out", folder, *words],
                   check=True, stdout=subprocess.DEVNULL)


def made_book(folder, count):
    """The generated book of so many contacts, with its tables for the databases."""
    book = folder / str(count)
    if not all((book / part).exists() for part in ("chinese.vcf", "doubles", "tables")):
        book.mkdir(parents=True, exist_ok=True)
        print(f"Making a book of {count:,} contacts", file=sys.stderr)
        generate(count, book)
        with_chinese_names(book / "contacts.vcf", book / "chinese.vcf")
        # As many as the fix of a hundred thousand in a million deletes.
        generate(count, book / "doubles", "--rate", "exact_duplicate=0.1")
        if not (book / "tables").exists():
            subprocess.run([sys.executable, HERE / "peers/tables.py", book / "contacts.vcf", book / "part"], check=True)
            (book / "part").rename(book / "tables")
    return book


def with_chinese_names(source, target):
    """A copy of the book in which every fifth contact has a Chinese name."""
    chosen = random.Random(1)
    names = [(last, first) for last in "王李张刘陈杨黄赵周吴" for first in ["海洋", "建国", "晓明", "雪梅", "文", "志强", "丽华", "春燕"]]
    card = -1
    name = None
    with open(source, encoding="utf-8", newline="") as book, open(target, "w", encoding="utf-8", newline="") as copy:
        for line in book:
            if line.startswith("BEGIN:"):
                card += 1
                name = chosen.choice(names) if card % 5 == 0 else None
            if name and line.startswith("N:"):
                line = f"N:{name[0]};{name[1]};;;\r\n"
            elif name and line.startswith("FN:"):
                line = f"FN:{name[0]}{name[1]}\r\n"
            copy.write(line)


def jobs(book, slow, bin, modules):
    """All programs that are there, and the names of those that are not."""
    vcf, csv, tables = book / "contacts.vcf", book / "contacts.csv", book / "tables"
    ours, lower, peers = bin / "kr_compare", bin / "lower_bound", HERE / "peers"
    node = [shutil.which("node") or "node"]
    duckdb = (modules / "@duckdb/node-api").exists()
    python = [sys.executable]
    yield Job("load", LOWER, [lower, "vcf", vcf])
    yield Job("load", OURS, [ours, "load", vcf])
    yield Job("load", OURS + ", 2 cores", [ours, "load", vcf], 2)
    yield from there(bin / "evcard", "libebook EVCard", Job("load", "libebook EVCard", [bin / "evcard", vcf]))
    yield from there(bin / "kcontacts", "KContacts", Job("load", "KContacts", [bin / "kcontacts", vcf]))
    has_vobject = subprocess.run([*python, "-c", "import vobject"], stderr=subprocess.DEVNULL).returncode == 0
    yield from there(has_vobject, "python3-vobject", Job("load, small book", "python3-vobject", [*python, peers / "vobject_load.py", slow / "contacts.vcf"]))
    yield Job("load, small book", OURS, [ours, "load", slow / "contacts.vcf"])
    yield Job("table", LOWER, [lower, "csv", csv])
    yield Job("table", OURS, [ours, "table", csv])
    yield from there(bin / "libcsv_rows", "libcsv", Job("table", "libcsv", [bin / "libcsv_rows", csv]))
    yield Job("table", "Python csv", [*python, peers / "csv_rows.py", csv])
    for threads in (1, 2):
        name = f"DuckDB, {threads} thread" + "s" * (threads > 1)
        for work, script, data in (("table", "duckdb_rows.js", csv), ("groups", "duckdb_groups.js", tables)):
            yield from there(duckdb, name, Job(work, name, [*node, peers / script, data, str(threads)], threads))
    yield Job("persons", OURS + " rfc4180", [ours, "persons", csv])
    yield Job("persons", OURS + " strict", [ours, "contract", csv])
    yield Job("groups", OURS, [ours, "groups", vcf])
    yield Job("groups", "SQLite, indexed", [*python, peers / "sqlite_groups.py", tables])
    yield Job("find", OURS, [ours, "scan", vcf])
    yield Job("find", OURS + ", 2 cores", [ours, "scan", vcf], 2)
    yield Job("find", OURS + ", Chinese names", [ours, "scan", book / "chinese.vcf"])
    yield Job("fix", OURS + " ignore all", [ours, "fix", vcf])
    yield Job("fix", OURS + " delete duplicates", [ours, "delete", book / "doubles" / "contacts.vcf"])
    yield Job("export", LOWER, [lower, "copy", vcf, book / "copy.vcf"])
    yield Job("export", OURS, [ours, "export", vcf])


def there(is_there, name, job):
    if isinstance(is_there, pathlib.Path):
        is_there = is_there.exists()
    if is_there:
        yield job
    else:
        print(f"Left out, as it is not installed: {name} ({job.work})", file=sys.stderr)


class Comparison:
    """What the jobs came to."""

    def __init__(self, jobs):
        self.jobs = jobs

    def get(self, work, name=OURS):
        return next((job for job in self.jobs if job.work == work and job.name == name), None)

    def ratio(self, work, ours, key, other_work, other, other_key="seconds"):
        one, two = self.get(work, ours), self.get(other_work, other)
        return one[key] / two[other_key] if one and two else None

    def targets(self):
        """Each target whose peers are there."""
        load, scan = self.get("load"), self.get("find")
        contacts = load["contacts"]
        lower_groups = self.get("load", LOWER)["groups_seconds"]
        wanted = [
            Target("load: speed against libebook EVCard", self.ratio("load", "libebook EVCard", "seconds", "load", OURS), 8, at_least=True),
            Target("load: time against the lower bound", self.ratio("load", OURS, "seconds", "load", LOWER), 3.5),
            Target("loaded book, a contact", load["resident"] / contacts, 1000, "bytes"),
            Target("book and findings, a contact", scan["resident"] / contacts, 1200, "bytes"),
            Target("peak while loading, a contact", load["peak"] / contacts, 1500, "bytes"),
            Target("five groupings against the lower bound", self.get("groups")["seconds"] / lower_groups, 2.5),
            Target("five groupings against DuckDB, 2 threads", self.ratio("groups", OURS, "seconds", "groups", "DuckDB, 2 threads"), 1),
            Target("whole find, 2 cores, against the lower bound's groupings", self.get("find", OURS + ", 2 cores")["seconds"] / lower_groups, 6),
            Target("the same on one core", scan["seconds"] / lower_groups, 6),
            Target("the same with Chinese names", self.get("find", OURS + ", Chinese names")["seconds"] / lower_groups, 8),
            Target("CSV to table against libcsv", self.ratio("table", OURS, "seconds", "table", "libcsv"), 1),
            Target("CSV to table against DuckDB, 2 threads", self.ratio("table", OURS, "seconds", "table", "DuckDB, 2 threads"), 1),
            Target("CSV to persons (strict) against libcsv's rows", self.ratio("persons", OURS + " strict", "seconds", "table", "libcsv"), 2),
            Target("CSV to persons (rfc4180) against libcsv's rows", self.ratio("persons", OURS + " rfc4180", "seconds", "table", "libcsv"), 2),
            Target("ignore all findings against the find", self.fix(" ignore all"), 1),
            Target("delete the duplicates against the find", self.fix(" delete duplicates"), 1),
            Target("export against copying the bytes", self.ratio("export", OURS, "seconds", "export", LOWER), 2),
        ]
        return [target for target in wanted if target.value is not None]

    def fix(self, what):
        job = self.get("fix", OURS + what)
        return job["seconds"] / job["find_seconds"]

    def check(self):
        """Sentences about programs that read or found something else than the lower bound. What this system finds follows
        its own rules, which leave some groups out."""
        lower = self.get("load", LOWER).runs[0]
        for job in self.jobs:
            result = job.runs[0]
            if job.work == "load":
                for kind in ("contacts", "phones", "emails", "addresses"):
                    if result[kind] != lower[kind]:
                        yield f"{job.name} read {result[kind]:,} {kind}, not {lower[kind]:,}"
            for grouping, count in (result.get("found") or {}).items():
                if job.name != OURS and count != lower["found"][grouping]:
                    yield f"{job.name} found {count:,} of {grouping}, not {lower['found'][grouping]:,}"


def print_work(comparison, work, title, base):
    mine = [job for job in comparison.jobs if job.work == work]
    if not mine:
        return
    low = min(job[base] for job in mine)
    rows = []
    for job in sorted(mine, key=lambda job: job[base]):
        seconds, contacts = job[base], job.runs[0].get("contacts")
        size = job.runs[0].get("bytes")
        rows.append([job.name, f"{seconds:.3f}", f"{seconds / low:.1f}", f"{size / 1e6 / seconds:,.0f}" if size else "",
                     f"{contacts / seconds / 1e3:,.0f}" if contacts else "", f"{job['peak'] / contacts:,.0f}" if contacts else ""])
    print_table([title, "seconds", "ratio", "MB/s", "1000/s", "peak bytes"], rows)


WORKS = [("load", "vCards to contacts, all read once", "seconds"),
         ("load, small book", "the same, a small book", "seconds"),
         ("table", "CSV to rows", "seconds"),
         ("persons", "CSV to delivered persons", "seconds"),
         ("groups", "five groupings", "seconds"),
         ("find", "whole find", "seconds"),
         ("fix", "fixes", "seconds"),
         ("export", "export", "seconds")]


def versions():
    """What was compared, as Debian calls it."""
    packages = ["libebook-contacts1.2-dev", "libkf5contacts-dev", "python3-vobject", "libcsv-dev", "python3", "libsqlite3-0", "g++"]
    if not shutil.which("dpkg-query"):
        return {}
    listed = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *packages], capture_output=True, text=True).stdout
    return dict(line.split(" ", 1) for line in listed.splitlines() if not line.endswith(" "))


def main():
    parser = argparse.ArgumentParser(prog="bench/compare/run", description="Compares this system with others, side by side in one run.")
    parser.add_argument("--contacts", type=int, default=1_000_000, help="size of the book (1000000)")
    parser.add_argument("--rounds", type=int, default=5, help="runs of each program (5)")
    parser.add_argument("--only", default="", help="only works and programs whose name contains this text")
    parser.add_argument("--out", type=pathlib.Path, help="folder for comparison.json and comparison.svg")
    parser.add_argument("--bin", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--books", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--modules", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    words = parser.parse_args()
    os.environ["NODE_PATH"] = str(words.modules)

    book = made_book(words.books, words.contacts)
    slow = made_book(words.books, min(words.contacts, SLOW))
    chosen = [job for job in jobs(book, slow, words.bin, words.modules) if words.only in f"{job.work} {job.name}"]
    memory = IdleMemory(words.books)
    for number in range(words.rounds):
        for job in chosen:
            say(f"Round {number + 1} of {words.rounds}: {job.work}, {job.name}")
            memory.fill(job.command)
            job.runs.append(measured(job.command, job.cores, words.books))
    end_saying()

    comparison = Comparison(chosen)
    for work in WORKS:
        print_work(comparison, *work)
    lower = comparison.get("load", LOWER)
    groups = [job for job in chosen if job.work == "groups"]
    if lower and groups:
        rows = [[LOWER] + [f"{lower[key + '_seconds']:.3f}" for key in GROUPINGS] + [f"{lower['groups_seconds']:.3f}", "1.0"]]
        for job in sorted(groups, key=lambda job: job["seconds"]):
            rows.append([job.name] + [f"{job[key + '_seconds']:.3f}" for key in GROUPINGS] +
                        [f"{job['seconds']:.3f}", f"{job['seconds'] / lower['groups_seconds']:.1f}"])
        print_table(["seconds", "name", "phone", "e-mail", "exact", "inside", "all", "ratio"], rows)
    targets = comparison.targets() if not words.only else []
    if targets:
        print_table(["target", "is", "wanted", ""], [target.line() for target in targets])
        for sentence in comparison.check():
            print(sentence)
    if words.out:
        words.out.mkdir(parents=True, exist_ok=True)
        document = {"contacts": words.contacts, "rounds": words.rounds, "versions": versions(),
                    "measurements": [{"work": job.work, "name": job.name, "cores": job.cores, "runs": job.runs} for job in chosen],
                    "targets": [{"work": target.work, "value": target.value, "unit": target.unit, "limit": target.limit,
                                 "atLeast": target.at_least, "met": target.is_met()} for target in targets]}
        (words.out / "comparison.json").write_text(json.dumps(document, indent=1) + "\n")
        bars = [(title, [(job.name, job[base]) for job in chosen if job.work == work]) for work, title, base in WORKS]
        (words.out / "comparison.svg").write_text(chart.drawn([group for group in bars if len(group[1]) > 1]))
        print(f"Written: {words.out}/comparison.json and .svg")


if __name__ == "__main__":
    main()
