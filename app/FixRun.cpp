#include "app/FixRun.h"

#include <unordered_set>

#include "app/BookOpener.h"
#include "app/ScanRun.h"
#include "app/Unsaved.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "contacts/undo/KRUndoTurn.h"
#include "issues/KRIssueConfig.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueManager.h"
#include "issues/KRNameConstraintManager.h"

namespace {

/// Keeps what is written into the preferences while it stands from ever reaching the disk.
class Aside {
 public:
  Aside() : standard_(KRPreferences::standard()) {
    KRPreferences::setStandard(krMake<KRPreferencesOverlay>(standard_));
  }
  ~Aside() { KRPreferences::setStandard(standard_); }
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;

 private:
  KRRef<KRPreferences> standard_;
};

/// The issues to look for, for this process only.
void chooseForThisRun(const KRStringList& issues) {
  const Aside aside;
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  KRIssueList chosen;
  for (const KRString& name : issues) chosen.append(manager.supportIssueByName(name));
  manager.setUseIssues(&chosen);
}

/// Has the shared settings made now: what they are at first is no change of a fix.
void readSettings() {
  const Aside aside;
  KRNameConstraintManager::ShareNameConstrainManager();
  KRIssueManager::shareIssueManager();
  KRIssueConfig::shareObject();
}

}  // namespace

void FixAccount::add(const FixEffect& effect) {
  ++findings;
  trashed += effect.trashed.size();
  if (effect.kind == FixKind::Merge) ++made;
  if (!effect.allowed.empty()) allowed.push_back(effect.allowed);
}

FixRun::FixRun(const std::string& book, Terminal& terminal)
    : terminal_(terminal), under_(KRPreferences::standard()), trash_(*KRTrashAddressBook::ShareTrashAddressBook()) {
  readSettings();
  if (const KRResult<void> loaded = trash_.load(); !loaded) throw Unusable(loaded.error().sentence);
  trashedBefore_ = trash_.allPersonsCount();
  book_ = BookOpener::openWritable(book, terminal);
  settings_ = krMake<KRPreferencesOverlay>(under_);
  KRPreferences::setStandard(settings_);
}

FixRun::~FixRun() {
  KRPreferences::setStandard(under_);
}

void FixRun::scan(const KRStringList& issues, const PersonFilter& filter) {
  chooseForThisRun(issues);
  scanUsed(filter);
}

void FixRun::scanUsed(const PersonFilter& filter) {
  filter.check(*book_);
  result_ = ScanRun::withProgress(book_, filter, terminal_.progress());
  terminal_.progress().clear();
}

KRRef<KRIssueContext> FixRun::contextOf(const KRIssue& issue) const {
  for (KRIssueContext& context : result_->contexts()) {
    if (context.issue().get() == &issue) return KRRef<KRIssueContext>(&context);
  }
  return {};
}

FixEffect FixRun::fix(KRIssueObject& finding, const KRRef<KRIssueHandle>& handle, FixWatch::Detail detail) {
  return fixFinding(finding, handle, detail);
}

FixAccount FixRun::fixAll(const FixChoice& choice, const Observer& observer) {
  FixAccount account;
  const KRRef<KRIssueContext> context = contextOf(*choice.issue);
  if (!context) return account;
  const std::string work = "Fixing " + std::string(choice.issue->name().view());
  const size_t all = context->objects().count();
  const auto detail = observer ? FixWatch::Detail::All : FixWatch::Detail::Counts;
  std::unordered_set<const IKRPerson*> changed;
  // A fix takes its finding out of the list, and others that lose their meaning with it.
  while (!context->objects().isEmpty()) {
    const FixEffect effect = fix(*context->objects().first(), choice.handle, detail);
    account.add(effect);
    if (effect.changesValues()) changed.insert(effect.persons.first());
    if (observer) observer(effect);
    terminal_.progress().show(work, krPercent(all - context->objects().count(), all));
  }
  account.changed = changed.size();
  terminal_.progress().clear();
  return account;
}

bool FixRun::hasChanges() const {
  return book_->hasChanges() || trash_.allPersonsCount() != trashedBefore_ || settings_->hasChanges();
}

void FixRun::save() {
  terminal_.progress().show("Saving");
  const KRUndoTurn turn;
  const int64_t written = KRUndoRecorder::count();
  if (trash_.allPersonsCount() != trashedBefore_) trash_.save();
  if (book_->hasChanges()) book_->save();
  // The scope takes out of the trash again what a book keeps that could not be written.
  if (const KRResult<void> saved = scope_.commit(); !saved) {
    throw Unusable(notSaved("nothing is fixed", written, saved.error()));
  }
  trashedBefore_ = trash_.allPersonsCount();
  if (!settings_->hasChanges()) return terminal_.progress().clear();
  if (const KRResult<void> kept = settings_->commit(); !kept) {
    throw Unusable("the contacts are saved, but not the settings: " + kept.error().sentence);
  }
  terminal_.progress().clear();
}
