#include "app/HelpText.h"

#include <string_view>

namespace {

struct Page {
  std::string_view command;
  std::string_view text;
};

constexpr Page kPages[] = {
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
  --dialect NAME, --map "HEADING=PROPERTY[:LABEL]", --use-map NAME, --raw-cells

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
  --dialect NAME, --map "HEADING=PROPERTY[:LABEL]", --use-map NAME, --raw-cells
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
  --dialect NAME, --map "HEADING=PROPERTY[:LABEL]", --use-map NAME
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
    {"books",
     R"(krcontacts books - shows your address books, adds and removes them

Usage:
  krcontacts books [--json]        every book: its name, how many contacts it
                                   has, its ID, its kind and its place
  krcontacts books show ID         one book, with its groups
  krcontacts books add PATH        list the book at the path, or all books of a
                                   database file; nothing is copied
  krcontacts books add --new NAME  make an empty book in your own database
  krcontacts books remove ID       take a book out of the list; its contacts
                                   stay where they are, and "books add" with its
                                   path or its ID lists it again
  krcontacts books default ID      the book that is meant when none is named

Where an ID is asked for, a book's name will do if no other book has it. A book
that cannot be opened is listed with the reason.

  --dry-run   change nothing; tell what would be done
  --json      one JSON document
  -h, --help  this page

Examples:
  krcontacts books add ~/contacts.vcf
  krcontacts books add --new Family
)"},
    {"import",
     R"(krcontacts import - puts the contacts of files into a book

Usage:
  krcontacts import FILE... --into BOOK [OPTIONS]
  krcontacts import FILE.csv... --preview [OPTIONS]

Reads vCard files (.vcf, .vcard; "-" is standard input) and delimited files
(.csv), and tells of every record what became of it. Cards of groups become
groups. Everything is saved together in the end, or nothing is.

A contact that is equal to one already there, in everything that is shown, is
skipped. Of a contact whose UID is there with other content you are asked on a
terminal; elsewhere it is skipped.

  --into BOOK       the ID or the name of the book ("krcontacts books")
  --existing WHAT   what becomes of contacts whose UID is there with other
                    content: skip; update (the one in the book gets the values,
                    and how it was goes to the trash); both (add it under a new
                    ID; equal contacts too); ask
  --rejects FILE    write the records that were rejected, or skipped although
                    they differ, to this file as they are
  --force           replace that file if it is there already
  --dry-run         write nothing; tell what would be done
  --verbose         the line and reason of every rejected record
  --json            the summary as one JSON document; nothing is asked
  --no-progress     no progress bar
  -h, --help        this page

Delimited files:
  --dialect NAME    strict: lines are cut at every tab or comma, outer quotes
                    dropped, last names put in the middle; as the library's
                    plain loader has it.
                    rfc4180: cells in quotes hold separators and line breaks;
                    comma, semicolon or tab and the character set are found out,
                    the headings of common programs are known.
                    (strict; rfc4180 when an option below is given)
  --map "HEADING=PROPERTY[:LABEL]"
                    let the column of that heading feed a property, or a part of
                    one: phone, phone.label, firstName, address.city, ignore. A
                    column without a heading is "Column 3". Given again: more
                    columns.
  --save-map NAME   keep this mapping under a name, once all is saved
  --use-map NAME    use a mapping that was kept
  --raw-cells       take apostrophes in front of cells for text, in files that
                    "export" has written
  --preview         put nothing in; show what each column feeds and why, the
                    first five contacts, and the rows that are dropped

Each contact gets an ID of its own; one that is equal to one already there is
skipped.

Examples:
  krcontacts import phone.vcf --into Family --rejects rejected.vcf
  krcontacts import mail.csv --preview --dialect rfc4180
  krcontacts import mail.csv --into Family --map "Shoe Size=note"
  krcontacts import *.vcf --into Family --existing update --dry-run
)"},
    {"export",
     R"(krcontacts export - writes the contacts of a book to a file

Usage:
  krcontacts export [BOOK] --to FILE.vcf [OPTIONS]
  krcontacts export [BOOK] --to FILE.csv [OPTIONS]

BOOK is an ID or a name ("krcontacts books") or a path; without it your default
book is meant. In a vCard file the groups of the contacts follow as cards of
their own.

A delimited file (.csv) has no groups and no IDs; "krcontacts import --dialect
rfc4180" reads it back to the same contacts. No cell can be run as a formula by
a spreadsheet: one that begins with = + - @ ' a tab or a carriage return gets an
apostrophe in front, which reading the file takes off again.

  --to FILE      the file to write; "-" is standard output. It is written whole
                 or not at all, and replaced only with --force.
  --version V    2.1, 3.0 or 4.0: every card in this version
                 (without it: every card as it is kept)
  --raw-cells    no apostrophes in a delimited file, for programs
  --where TEXT, --id ID
                 only some contacts, as in "krcontacts show"
  --force        replace a file that is there already
  --dry-run      write nothing; tell what would be written
  --verbose      the contacts and values that the version cannot hold
  --no-progress  no progress bar
  -h, --help     this page

Examples:
  krcontacts export Family --to family.vcf
  krcontacts export --to phone.vcf --version 3.0
  krcontacts export Family --to family.csv
)"},
    {"trash",
     R"(krcontacts trash - shows what was deleted, and puts it back

Usage:
  krcontacts trash [list] [--where TEXT] [--json]
                                      the contacts in the trash, oldest first
  krcontacts trash show [PERSON...]   all that is known of them
  krcontacts trash restore PERSON...  put them back into the books and groups
                                      that they came from
  krcontacts trash restore --all      put every contact back
  krcontacts trash remove PERSON...   remove them for ever
  krcontacts trash clear              remove all for ever

PERSON is a number of the list, or the ID of a contact; a word of digits is a
number as long as the list is that long. A contact leaves the trash only after
it was saved in its book.

  --into BOOK  restore to this book, not to those that they came from
  --yes        clear without being asked
  --dry-run    change nothing; tell what would be done
  --json       one JSON document
  -h, --help   this page

Examples:
  krcontacts trash list --where smith
  krcontacts trash restore 3 4
)"},
    {"undo",
     R"(krcontacts undo - puts back what a run changed

Usage:
  krcontacts undo [RUN] [--dry-run] [--json]
  krcontacts undo --list [--json]

Puts the books, the trash and the settings that the last run changed back to how
they were before it; with RUN, a number of the list, those that this run
changed. A second undo does the run again.

Nothing is touched when one of them has changed since that run; then undo first
what was run after it. Files come back byte for byte. Of settings only what the
run itself changed is put back, and of the desktop's own books only the contacts
and lists that it wrote; their time of change is new. RUN may be one that failed
or was stopped. One that left everything as it was is not in the list.

The last run can always be undone; the 19 before it within 30 days, as long as
what is kept for it holds less than 1 GiB. It is kept in the folder "undo"
beside the trash, for you only.

  --list      the runs that can be undone, the last one first
  --dry-run   change nothing; tell what would be put back
  --json      one JSON document
  -h, --help  this page

Examples:
  krcontacts undo --dry-run
  krcontacts undo 12
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
    {"fix",
     R"(krcontacts fix - fixes what a scan has found

Usage:
  krcontacts fix [BOOK] [--issues NAME[,NAME...]] [OPTIONS]
  krcontacts fix [BOOK] --apply ISSUE=HANDLE [--apply ISSUE=HANDLE]... [OPTIONS]

BOOK is the ID or the name of one of your books ("krcontacts books" shows them)
or the path of a file or folder of vCards or of a database; without it your
default book is fixed. All contacts are scanned. What is deleted or merged goes
to the trash. Book and trash are saved together; when that cannot be done,
everything is left as it was.

Without --apply, on a terminal: finding by finding, with the contacts side by
side ("≠" marks what differs, "=" what a contact has twice), the fixes numbered,
and keys to ignore, skip, edit a contact as a vCard in $VISUAL or $EDITOR, take
back, give all findings of the issue one fix, save and quit. Nothing is written
before it is saved.

  --issues NAME         walk through these issues only (without it: those chosen
                        for use); names as "krcontacts issues" shows them

With --apply: every finding of the issue gets the fix.

  --apply ISSUE=HANDLE  names as "krcontacts issues" shows them, such as
                        exact-duplicates=delete-duplicates. Given again: the
                        next issue, in this order. Beside the fixes that are
                        shown there, duplicate-names, shared-phone and
                        shared-email offer merge, and incomplete-name offers
                        use-default-string.
  --where TEXT          only findings with a contact that contains the text,
                        whatever its case, in one of its values. Given again:
                        all texts must be there.
  --id ID               only findings with the contact of exactly this ID. Given
                        again: of any of them.
  --remember            remember the findings that are ignored (ISSUE=ignore)
                        with the book ("krcontacts ignored --help")
  --dry-run             show what each fix would change, line by line, and
                        change nothing
  --json                one JSON document (docs/fix.schema.json)
  --no-progress         no progress bar
  -h, --help            this page

Examples:
  krcontacts fix --apply exact-duplicates=delete-duplicates --dry-run
  krcontacts fix Family --apply duplicate-names=merge --where barrow
)"},
    {"merge",
     R"(krcontacts merge - makes one contact of several

Usage:
  krcontacts merge BOOK ID ID... [OPTIONS]

BOOK is the ID or the name of one of your books, or the path of a file or folder
of vCards or of a database. The IDs are those of its contacts, as "krcontacts
show" tells them; the first one comes first in everything.

Of what a contact has once (its name, a note, a picture) the first contact that
has it decides. Of what it can have several times (phones, addresses, tags)
every different one is kept, with the label that it has first. Lines of vCards
that are not shown are kept too, each once, and the groups of all. The merged
contact is new; those that it is made of go to the trash.

The merged contact is shown, and what became of every value:
  kept    it stands in the merged contact
  equal   the merged contact has the same value from before
  trash   it is left in the trash only

  --dry-run      show that, and change nothing
  --json         one JSON document (docs/merge.schema.json)
  --no-progress  no progress bar
  -h, --help     this page

Example:
  krcontacts merge Family ann-1 ann-2 --dry-run
)"},
    {"plan",
     R"(krcontacts plan - writes fixes down, to be looked at, edited and applied

Usage:
  krcontacts plan [BOOK] --apply ISSUE=HANDLE [--apply ISSUE=HANDLE]...
                  [OPTIONS] > plan.json

What "krcontacts fix" would do with the same words is written as one JSON
document (docs/plan.schema.json), a fix for each finding, and nothing is
changed. Before "krcontacts apply plan.json" does it, the document may be edited
by hand or by a program:

  drop a fix       it is not applied
  drop a contact   the fix is about the others; the first one named is the one
                   that is kept, or comes first in a merge
  "values"         fixes with the handle "edit" carry what the contact holds:
                   write there what it is to hold

  --apply ISSUE=HANDLE  names as "krcontacts issues" shows them
  --where TEXT          only findings with a contact that contains the text
  --id ID               only findings with the contact of exactly this ID
  --no-progress         no progress bar
  -h, --help            this page

Example:
  krcontacts plan Family --apply invalid-characters=edit > plan.json
)"},
    {"apply",
     R"(krcontacts apply - applies the fixes of a plan, exactly these

Usage:
  krcontacts apply PLAN [OPTIONS]

PLAN is a document that "krcontacts plan" wrote, "-" standard input. The book is
scanned again; when a contact of a fix is gone or has changed since, or a
finding is not there any more, that is said and nothing is applied. A fix that
an earlier one has settled, as where both delete the same contact, is passed
over.

  --book BOOK    apply to this book, not to the one that the plan names
  --dry-run      show what each fix would change, and change nothing
  --json         one JSON document (docs/fix.schema.json)
  --no-progress  no progress bar
  -h, --help     this page
)"},
    {"ignored",
     R"(krcontacts ignored - shows the findings that are ignored from now on

Usage:
  krcontacts ignored [list [BOOK]] [--json]
  krcontacts ignored forget BOOK NUMBER...   see them again
  krcontacts ignored forget BOOK --all

"krcontacts fix --apply ISSUE=ignore --remember" remembers findings with their
book, and "krcontacts scan --hide-ignored" leaves them out. They are known by
what the contacts are and hold, not by their IDs: they stay hidden when the
contacts are imported anew, and come up again when something that concerns them
changes.

  --all       every one
  --dry-run   change nothing; tell what would be done
  --json      the list as one JSON document
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

std::string HelpText::of(const CLI::App* command) {
  // The verbs of a command are explained on the command's own page.
  for (const CLI::App* each = command; each != nullptr; each = each->get_parent()) {
    for (const Page& page : kPages) {
      if (page.command == each->get_name()) return std::string(page.text);
    }
  }
  return {};
}

std::string HelpText::Formatter::make_help(const CLI::App* command, std::string /*name*/,
                                           CLI::AppFormatMode /*mode*/) const {
  return of(command);
}
