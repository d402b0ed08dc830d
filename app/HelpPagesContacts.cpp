// What a book holds: looking at it, and at what counts as an issue.
#include "app/HelpPages.h"

namespace {

constexpr HelpPage kPages[] = {
    {"krcontacts",
     R"(krcontacts - finds what is wrong in an address book

Usage:
  krcontacts scan [BOOK]     show the issues in an address book or in files
  krcontacts show [BOOK]     show the contacts themselves
  krcontacts fix [BOOK]      fix what a scan has found
  krcontacts merge BOOK ID ID...
                             make one contact of several
  krcontacts plan [BOOK]     write fixes down, to be looked at and edited
  krcontacts apply PLAN      apply them
  krcontacts ignored         show the findings that are ignored from now on
  krcontacts books           show your address books, add and remove them
  krcontacts import FILE...  put the contacts of files into a book
  krcontacts mappings        show the kept mappings of delimited files
  krcontacts export [BOOK]   write the contacts of a book to a file
  krcontacts trash           show what was deleted, put it back
  krcontacts undo            put back what a run changed
  krcontacts load FILE       show what an import gets, person by person
  krcontacts convert FILE    write the contacts of a file to another one
  krcontacts issues          show, or choose, the issues that a scan looks for
  krcontacts settings        show, or change, what counts as an issue
  krcontacts properties      show the properties that a contact can hold

  krcontacts COMMAND --help  what a command can do
  krcontacts --version       the version of the program and its library

The result goes to standard output, everything else to standard error.

Exit codes:
  0    done, whatever was found
  1    there are findings (only with "scan --exit-code")
  2    something given cannot be used; one line says what
  130  interrupted with Ctrl-C

Environment:
  KRCONTACTS_TERMINAL     "output" or "all": what is written is shown on a
                          terminal, although the system does not say so
  KRCONTACTS_HOME         a folder that holds all files of this program, instead
                          of those in the XDG base directories
  LC_ALL, LC_MESSAGES, LANG
                          the language of issue names (English, French), and the
                          country
  NO_COLOR                no colours
  COLUMNS                 the width of the output where there is no terminal
)"},
    {"scan",
     R"(krcontacts scan - shows the issues in an address book

Usage:
  krcontacts scan [OPTIONS] [BOOK]
  krcontacts scan [OPTIONS] FILE...

BOOK is the ID or the name of one of your books ("krcontacts books" shows them)
or the path of a book; without it your default book is scanned. Several files
are scanned as one address book; "-" is standard input, read as vCards. Files
are named .vcf, .vcard or .csv. Nothing is changed.

What to look for:
  --issues NAME[,NAME...]  only these issues; names as "krcontacts issues" shows
                           them. The choice is for this scan only.
  --all-issues             every issue there is
                           (without either: the issues chosen for use)
  --where TEXT             only findings with a contact that contains the text,
                           whatever its case, in one of its values: a name, a
                           number, a part of an address, a note. Given again:
                           all texts must be there.
  --id ID                  only findings with the contact of exactly this ID.
                           Given again: of any of them.
                           (All contacts are compared; this only narrows what is
                           shown.)

How delimited files (.csv) are read, as in "krcontacts import":
  --dialect NAME, --separator WHAT, --day-order WHAT,
  --map "HEADING=PROPERTY[:LABEL]", --use-map NAME, --raw-cells

What to show:
  --limit N                at most N findings for each issue (10)
  --verbose                every finding, every contact in it, and the line and
                           reason of every contact that could not be read
  --explain                also the contacts that are nearly the same name,
                           phone number, e-mail address or contact, and what
                           differs.
                           Only texts that are exactly equal are findings; these
                           are equal but for upper and lower case, accents,
                           spaces and punctuation, phone numbers in their last
                           nine digits. Of long texts what is around the place
                           where they part; --verbose shows them whole. Not with
                           --events.
  --hide-ignored           without the findings that are remembered as ignored
                           with the book ("krcontacts ignored --help")
  --json                   one JSON document with every finding
  --events                 one JSON line for each step of the scan: its start,
                           its progress, and its end with the document of --json
  --no-progress            no progress bar

  --exit-code              exit with 1 when there are findings
  -h, --help               this page

Examples:
  krcontacts scan contacts.vcf
  krcontacts scan --issues blank-name,invalid-characters work.vcf home.vcf
  krcontacts scan --explain --issues shared-phone contacts.vcf
  krcontacts scan --json contacts.vcf | jq '.contexts[].findings | length'
)"},
    {"show",
     R"(krcontacts show - shows the contacts of an address book

Usage:
  krcontacts show [OPTIONS] [BOOK]
  krcontacts show [OPTIONS] FILE...

BOOK is the ID or the name of one of your books ("krcontacts books" shows them)
or the path of a book; without it your default book is shown. Several files are
shown as one address book; "-" is standard input, read as vCards. Files are
named .vcf, .vcard or .csv.

Which contacts:
  --where TEXT   only contacts that contain the text, whatever its case, in one
                 of their values: a name, a number, a part of an address, a note,
                 a date as it is shown. Labels are not looked at. Given again:
                 all texts must be there.
  --id ID        only the contact of exactly this ID. Given again: each of them.

How:
  --dialect NAME, --separator WHAT, --day-order WHAT,
  --map "HEADING=PROPERTY[:LABEL]", --use-map NAME, --raw-cells
                 how delimited files (.csv) are read, as in "krcontacts import"
  --json         one JSON document, with every value of every property
  --verbose      the line and reason of every contact that could not be read
  --no-progress  no progress bar
  -h, --help     this page

Examples:
  krcontacts show contacts.vcf | less
  krcontacts show --where example.com work.vcf home.vcf
  krcontacts show --json contacts.vcf | jq -r '.persons[].showName'
)"},
    {"load",
     R"(krcontacts load - shows what an import of a file gets, person by person

Usage:
  krcontacts load [OPTIONS] FILE

Reads the file as the library's loader does for a host's import and writes one
JSON line for each call that the host gets, at once and in order:
  {"event": "start"}
  {"event": "number", "total": N}
  {"event": "progress", "progress": PERCENT, "person": PERSON}
  {"event": "end"}
PERSON is as in "show --json"; its index counts the persons of the file from 0.

A vCard file is cut at every END:VCARD, in exactly this case, so it gives less
than "show" where a file is not well-formed; N is one more than there are ends.
In a delimited file the headings decide what each column is; N is how many rows
there are below them. Files are named .vcf, .vcard or .csv.

  --notes     the line, card and reason of everything that was passed over
  --dialect NAME, --separator WHAT, --day-order WHAT,
  --map "HEADING=PROPERTY[:LABEL]", --use-map NAME, --raw-cells
              how a delimited file is read, as in "krcontacts import"
  -h, --help  this page
)"},
    {"convert",
     R"(krcontacts convert - writes the contacts of a file to another file

Usage:
  krcontacts convert FILE --to FILE.vcf [OPTIONS]
  krcontacts convert FILE --to FILE.csv [OPTIONS]

FILE is named .vcf, .vcard or .csv; "-" is standard input, and after --to
standard output, both as vCards. How delimited files (.csv) are read is said in
"krcontacts import --help", how they are written in "krcontacts export --help".

  --to FILE      the file to write. It is written whole or not at all, and one
                 that is there already is replaced only with --force.
  --version V    2.1, 3.0 or 4.0: every card is written anew in this version, in
                 UTF-8; contacts without an identifier get one. Cards of groups
                 are carried along, behind the contacts.
                 (without it: every byte is copied as it is, once it is sure that
                 there are contacts in the file; contacts of a delimited file are
                 written in 3.0)
  --dialect NAME, --separator WHAT, --day-order WHAT,
  --map "HEADING=PROPERTY[:LABEL]", --use-map NAME
                 how a delimited file is read, as in "krcontacts import"
  --raw-cells    no apostrophes that guard cells, neither read nor written
  --force        replace a file that is there already
  --dry-run      write nothing; tell what would be written
  --verbose      the contacts and values that the version cannot hold, and the
                 line and reason of everything that could not be read
  --no-progress  no progress bar
  -h, --help     this page

Examples:
  krcontacts convert old.vcf --to new.vcf --version 4.0
  krcontacts convert phone.vcf --to - --version 3.0 | less
  krcontacts convert mail.csv --dialect rfc4180 --to mail.vcf
)"},
    {"properties",
     R"(krcontacts properties - shows the properties that a contact can hold

Usage:
  krcontacts properties [--json]

Lists them in their standard order, with the types of their values, and tells
which fields an address has in your country, in the order in which they are
written.

  --json      one JSON document
  -h, --help  this page
)"},
    {"issues",
     R"(krcontacts issues - shows, or chooses, the issues that a scan looks for

Usage:
  krcontacts issues [--json]        every issue, with the fixes that it offers;
                                    [x] marks those chosen for use
  krcontacts issues use NAME...     choose these issues too
  krcontacts issues drop NAME...    no longer look for these issues
  krcontacts issues reset           choose every issue again

A NAME is a short name ("blank-name") or a constant ("KRIssueBlankName"). The
choice is kept for the next scans.

  --json      one JSON document
  -h, --help  this page
)"},
    {"settings",
     R"(krcontacts settings - shows, or changes, what counts as an issue

Usage:
  krcontacts settings [show [WHAT]] [--json]
  krcontacts settings set WHAT VALUE...     have exactly these values
  krcontacts settings add WHAT VALUE...     have these values too
  krcontacts settings remove WHAT VALUE...  no longer have these values
  krcontacts settings reset [WHAT]          go back to what they were at first
  krcontacts settings export [FILE]         write all settings as JSON
  krcontacts settings import FILE           take settings from such a file

WHAT is one of
  duplicate-names   the parts of a name that are compared when looking for
                    contacts with the same name: first, middle, last
  prefixes          the name prefixes that count as usual, such as Dr
  suffixes          the name suffixes that count as usual, such as Jr

Prefixes and suffixes are compared letter for letter: "Dr" is not "Dr.". FILE
may be "-" for standard output or standard input.

  --json      one JSON document
  -h, --help  this page

Examples:
  krcontacts settings set duplicate-names first,last
  krcontacts settings add prefixes Dr. Prof.
  krcontacts settings export settings.json
)"},
};

}  // namespace

std::span<const HelpPage> HelpPages::ofContacts() {
  return kPages;
}
