// Where contacts are kept, and what was there before.
#include "app/HelpPages.h"

namespace {

constexpr HelpPage kPages[] = {
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
  --separator WHAT  what stands between cells: comma, semicolon, tab, pipe, or
                    one other character (found out)
  --day-order WHAT  day-first or month-first, in dates such as 3/2/1990 (found
                    out from all dates of the file)
  --map "HEADING=PROPERTY[:LABEL]"
                    let the column of that heading feed a property, or a part of
                    one: phone, phone.label, firstName, address.city, ignore. A
                    column without a heading is "Column 3". Given again: more
                    columns.
  --save-map NAME   keep this mapping under a name, once all is saved
  --use-map NAME    use a mapping that was kept ("krcontacts mappings")
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
    {"mappings",
     R"(krcontacts mappings - shows the mappings of delimited files that were kept

Usage:
  krcontacts mappings [list] [--json]
  krcontacts mappings remove NAME...

"krcontacts import FILE.csv --save-map NAME" keeps what each column feeds under
a name, and --use-map NAME lets the columns of another file with the same
headings feed the same.

  --json      the list as one JSON document
  -h, --help  this page
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
it was saved in its book. Those of a file or folder that is in no list go back
there while it is still there. One that the book has already, the same in
everything shown and of the same ID, is not restored a second time: that is
said, and it stays in the trash.

  --into BOOK  restore to this book, or the one at this path, not to those that
               they came from
  --again      restore also what the book has already
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
what was run after it. Of a folder only the files that the run wrote count.
Files come back byte for byte. Of settings only what the run itself changed is
put back, and of the desktop's own books only the contacts and lists that it
wrote; their time of change is new. RUN may be one that failed or was stopped.
One that left everything as it was is not in the list.

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
};

}  // namespace

std::span<const HelpPage> HelpPages::ofBooks() {
  return kPages;
}
