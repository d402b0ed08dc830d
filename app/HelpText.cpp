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
  krcontacts scan FILE...    show the issues in vCard files
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
     R"(krcontacts scan - shows the issues in vCard files

Usage:
  krcontacts scan [OPTIONS] FILE...

Several files are scanned as one address book; "-" is standard input. The files
are read and never changed. Files are named .vcf or .vcard.

What to look for:
  --issues NAME[,NAME...]  only these issues; names as "krcontacts issues" shows
                           them. The choice is for this scan only.
  --all-issues             every issue there is
                           (without either: the issues chosen for use)

What to show:
  --limit N                at most N findings for each issue (10)
  --verbose                every finding, every contact in it, and the line and
                           reason of every contact that could not be read
  --json                   one JSON document with every finding
  --events                 one JSON line for each step of the scan: its start,
                           its progress, and its end with the document of --json
  --no-progress            no progress bar

  --exit-code              exit with 1 when there are findings
  -h, --help               this page

Examples:
  krcontacts scan contacts.vcf
  krcontacts scan --issues blank-name,invalid-characters work.vcf home.vcf
  krcontacts scan --json contacts.vcf | jq '.contexts[].findings | length'
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
