#include "app/Remembering.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "issues/KRIssueContext.h"

namespace {

bool ignores(const FixChoice& choice) {
  return sameText(choice.handle->name(), KRHandleNameIgnore);
}

}  // namespace

bool Remembering::isMeant(const std::vector<FixChoice>& choices) {
  return std::any_of(choices.begin(), choices.end(), ignores);
}

KRIgnoredFindings Remembering::of(const KRAddressBook& book) {
  KRResult<KRIgnoredFindings> ignored = KRIgnoredFindings::ofBook(book.ID());
  if (!ignored) throw Unusable(ignored.error().sentence);
  return *std::move(ignored);
}

Remembering::Remembering(FixRun& run, const std::vector<FixChoice>& choices) : ignored_(of(run.book())) {
  for (const FixChoice& choice : choices) {
    const KRRef<KRIssueContext> context = ignores(choice) ? run.contextOf(*choice.issue) : KRRef<KRIssueContext>();
    if (!context) continue;
    for (const KRIssueObject& finding : context->objects()) {
      ++all_;
      if (ignored_.add(finding)) ++count_;
    }
  }
}

void Remembering::save() {
  save(ignored_);
}

void Remembering::save(KRIgnoredFindings& ignored) {
  if (const KRResult<void> saved = ignored.save(); !saved) {
    throw Unusable("the fixes are saved, but what is ignored is not remembered: " + saved.error().sentence);
  }
}

void Remembering::print(Terminal& terminal, bool isDryRun) const {
  terminal.line();
  if (all_ == 0) {
    terminal.paragraph("There is no finding to remember.");
    return;
  }
  if (count_ == 0) {
    terminal.paragraph("Every ignored finding was remembered before; \"krcontacts ignored\" lists and forgets them.");
    return;
  }
  terminal.paragraph(counted(count_, "ignored finding", "ignored findings") +
                     (isDryRun ? " would be remembered" : " remembered") +
                     " with the book; \"krcontacts ignored\" lists and forgets them");
}
