// What changes contacts.
#include "app/HelpPages.h"

namespace {

constexpr HelpPage kPages[] = {
    {"fix",
     R"(krcontacts fix - fixes what a scan has found

Usage:
  krcontacts fix [BOOK] [--issues NAME[,NAME...]] [OPTIONS]
  krcontacts fix [BOOK] --apply ISSUE=HANDLE [--apply ISSUE=HANDLE]... [OPTIONS]

BOOK is the ID or the name of one of your books ("krcontacts books" shows them)
or the path of a file or folder of vCards or of a database; without it your
default book is fixed. All contacts are scanned. What is deleted or merged goes
to the trash. Book and trash are saved together; when that cannot be done,
everything is left as it was. Then come settings that a fix changes, then what
is remembered: when one of these cannot be written, that is said, what was
written before stays, and "krcontacts undo" takes it back.

Without --apply, on a terminal: finding by finding, with the contacts side by
side ("≠" marks what differs, "=" what a contact has twice), the fixes numbered,
and keys to ignore, skip, edit a contact as a vCard in $VISUAL or $EDITOR, take
back, give all findings of the issue one fix, save and quit. Nothing is written
before it is saved.

  --issues NAME         walk through these issues only (without it: those chosen
                        for use); names as "krcontacts issues" shows them
  --remember            remember the findings that are ignored (key i) with the
                        book, once they are saved ("krcontacts ignored --help")

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
  --remember            remember the findings of ISSUE=ignore with the book
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
an earlier one has settled, as where both delete the same contact or the plan
names the same one twice, is passed over.

  --book BOOK    apply to this book, not to the one that the plan names
  --dry-run      show what each fix would change, and change nothing
  --json         one JSON document (docs/fix.schema.json)
  --no-progress  no progress bar
  -h, --help     this page
)"},
    {"ignored",
     R"(krcontacts ignored - shows the findings that are ignored from now on

Usage:
  krcontacts ignored [--json]                of all books, book by book
  krcontacts ignored [list] BOOK [--json]
  krcontacts ignored forget BOOK NUMBER...   see them again
  krcontacts ignored forget BOOK --all

"krcontacts fix --remember" remembers findings with their book that are ignored
in the walk through them, or by --apply ISSUE=ignore, and "krcontacts scan
--hide-ignored" leaves them out. They are known by what the contacts are and
hold, not by their IDs: they stay hidden when the contacts are imported anew,
and come up again when something that concerns them changes.

  BOOK        a book of the list ("krcontacts books"), the path of a file or
              folder, or the identifier that "krcontacts ignored" shows in
              brackets, where the file is gone
  NUMBER      as "krcontacts ignored" numbers the findings of the book
  --all       every one
  --dry-run   change nothing; tell what would be done
  --json      the list as one JSON document
  -h, --help  this page
)"},
};

}  // namespace

std::span<const HelpPage> HelpPages::ofFixes() {
  return kPages;
}
