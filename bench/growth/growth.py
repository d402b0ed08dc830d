"""Measures each step over books of growing sizes and prints how the time grows; bench/growth/run builds the program and calls
this.

Every measurement is a process of its own on one core. The rounds are interleaved: each round runs every step at every
size once. Of the rounds the fastest counts: what a program needs does not change, what others take from it does.
"""
import argparse
import dataclasses
import json
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent))

from measuring import IdleMemory, end_saying, measured_in, print_table, say  # noqa: E402

SIZES = [250_000, 500_000, 1_000_000, 2_000_000, 4_000_000]
MOST = 2.3  # how much longer a step may take for twice as many contacts


@dataclasses.dataclass
class Step:
    """A kind of work, and its name in the program."""
    title: str
    name: str
    runs: dict = dataclasses.field(default_factory=dict)

    def seconds(self, size):
        return min(run["seconds"] for run in self.runs[size])

    def ratio(self, size):
        """To the time for half as many; nothing for the smallest."""
        return self.seconds(size) / self.seconds(size // 2) if size // 2 in self.runs else None


STEPS = [
    Step("load", "load"),
    Step("find", "find"),
    Step("sort the findings", "sort"),
    Step("ignore all findings", "ignore"),
    Step("delete all duplicates", "delete"),
    Step("merge all of one name", "merge"),
    Step("save a trash of all", "trash-save"),
    Step("load that trash", "trash-load"),
    Step("save into SQLite", "library-save"),
    Step("load from SQLite", "library-load"),
]


def made_book(folder, count):
    """The file of a generated book of so many contacts."""
    book = folder / str(count)
    if not (book / "contacts.vcf").exists():
        part = folder / f"{count}.part"
        part.mkdir(parents=True, exist_ok=True)
        say(f"Making a book of {count:,} contacts")
        subprocess.run([sys.executable, HERE.parent / "gen_contacts.py", "--count", str(count), "--seed", "1", "--out", part],
                       check=True, stdout=subprocess.DEVNULL)
        part.rename(book)
    return book / "contacts.vcf"


def measure(steps, sizes, rounds, words):
    """Runs all steps; those that load read what those that save left, in a folder for each size and round."""
    memory = IdleMemory(words.books)
    for number in range(rounds):
        for size in sizes:
            book = made_book(words.books, size)
            with tempfile.TemporaryDirectory(dir=words.books) as folder:
                for step in steps:
                    say(f"Round {number + 1} of {rounds}: {size:,} contacts, {step.title}")
                    command = [words.program, step.name, book]
                    memory.fill(command, folder)
                    step.runs.setdefault(size, []).append(measured_in(folder, command, 1))
    end_saying()


def rows(steps, sizes):
    for step in steps:
        row = [step.title]
        for size in sizes:
            ratio = step.ratio(size)
            row += [f"{step.seconds(size):.2f}", "" if ratio is None else f"{ratio:.2f}"]
        yield row


def main():
    parser = argparse.ArgumentParser(prog="bench/growth/run", description="How the cost of each step grows with the book.")
    parser.add_argument("--sizes", default=",".join(map(str, SIZES)), help="contacts, each twice the one before (250000,...)")
    parser.add_argument("--rounds", type=int, default=3, help="runs of each step at each size (3)")
    parser.add_argument("--only", default="", help="only steps whose name contains this text")
    parser.add_argument("--out", type=pathlib.Path, help="folder for growth.json")
    parser.add_argument("--program", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--books", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    words = parser.parse_args()

    sizes = [int(size) for size in words.sizes.split(",")]
    steps = [step for step in STEPS if words.only in step.name]
    words.books = words.books.resolve()
    words.books.mkdir(parents=True, exist_ok=True)
    measure(steps, sizes, words.rounds, words)

    heads = ["seconds, and times those for half as many"]
    for size in sizes:
        heads += [f"{size:,}", ""]
    print_table(heads, list(rows(steps, sizes)))
    ratios = [(step.ratio(size), step.title, size) for step in steps for size in step.runs if step.ratio(size)]
    above = [each for each in ratios if each[0] > MOST]
    for ratio, title, size in above:
        print(f"{title}, {size:,} contacts: {ratio:.2f} times, more than {MOST:g}")
    if ratios and not above:
        print(f"Every ratio is at most {MOST:g}; the largest is {max(ratios)[0]:.2f}.")
    if words.out:
        words.out.mkdir(parents=True, exist_ok=True)
        document = {"sizes": sizes, "rounds": words.rounds,
                    "steps": [{"step": step.title, "runs": {str(size): runs for size, runs in step.runs.items()}} for step in steps]}
        (words.out / "growth.json").write_text(json.dumps(document, indent=1) + "\n")
        print(f"Written: {words.out}/growth.json")


if __name__ == "__main__":
    main()
