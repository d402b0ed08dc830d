#include "app/Remembering.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "issues/KRFindingKey.h"
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
    for (const KRIssueObject& finding : context->objects()) add(finding);
  }
}

void Remembering::add(const KRIssueObject& finding) {
  if (ignored_.add(finding)) ++count_;
}

void Remembering::takeBack(const KRIssueObject& finding) {
  if (!ignored_.holds(finding)) return;
  ignored_.forget(krFindingKey(finding));
  if (count_ > 0) --count_;
}

void Remembering::save() {
  if (const KRResult<void> saved = ignored_.save(); !saved) {
    throw Unusable("the fixes are saved, but what is ignored is not remembered: " + saved.error().sentence);
  }
}

void Remembering::print(Terminal& terminal, bool isDryRun) const {
  terminal.line();
  terminal.paragraph(counted(count_, "ignored finding", "ignored findings") +
                     (isDryRun ? " would be remembered" : " remembered") +
                     " with the book; \"krcontacts ignored\" lists and forgets them");
}
