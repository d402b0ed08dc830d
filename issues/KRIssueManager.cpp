#include "issues/KRIssueManager.h"

#include <algorithm>
#include <array>
#include <utility>

#include "contacts/undo/KRUndoRecorder.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRSharedInstance.h"
#include "issues/KRStoredSettings.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRSupportFuction.h"
#include "platform/KRValue.h"

namespace {

constexpr KRString kPreferencesKey = "KR_ISSUE_MANAGER_USERDEFAULT_KEY"_kr;
// Spelled so in every archive there is.
constexpr KRString kUsedNamesKey = "KR_ISSUE_ABLE_LSIT"_kr;

constexpr size_t kMostHandles = 3;

/// One issue of the catalogue. Either a key of the string table or the text itself tells `describe` and `displayName`;
/// the two with a text are not localised, on purpose.
struct Row {
  KRString name;
  KRString key;
  KRString text;
  bool multiPerson;
  std::array<KRString, kMostHandles> handles;
};

// Every issue ends with Ignore. No issue offers the default name or the merge: a host sets those on single findings.
constexpr Row kCatalogue[] = {
    {KRIssueDuplicateNames, "KRIssueName_Duplicatecontacts"_kr, nullptr, true, {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueDuplicateInfo,
     nullptr,
     "Exact duplicate contacts"_kr,
     true,
     {KRHandleNameDeleteDuplicatePerson, KRHandleNameIgnore}},
    {KRIssueIncompleteName, "KRIssueName_IncompleteName"_kr, nullptr, false, {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueBlankName,
     "KRIssueName_BlankName"_kr,
     nullptr,
     false,
     {KRHandleNameEdit, KRHandleNameDeleteContact, KRHandleNameIgnore}},
    {KRIssueInvalidCharacters,
     "KRIssueName_InvalidCharacters"_kr,
     nullptr,
     false,
     {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueDuplicatePhoneNumber,
     "KRIssueName_DuplicatePhoneNumber"_kr,
     nullptr,
     false,
     {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore}},
    {KRIssueDuplicateEmailAddress,
     "KRIssueName_DuplicateEmailAddress"_kr,
     nullptr,
     false,
     {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore}},
    {KRIssueDuplicateAddress,
     "KRIssueName_DuplicateAddress"_kr,
     nullptr,
     false,
     {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore}},
    {KRIssuePhonesDuplicatedAmongMultipleContacts,
     "KRIssueName_PhonesDuplicatedAmongMultipleContacts"_kr,
     nullptr,
     true,
     {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueEmailsDuplicatedAmongMultipleContacts,
     "KRIssueName_EmailsDuplicatedAmongMultipleContacts"_kr,
     nullptr,
     true,
     {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueUnusualTitle,
     "KRIssueName_UnusualTitle"_kr,
     nullptr,
     false,
     {KRHandleNameAddSupport, KRHandleNameDeleteProperty, KRHandleNameIgnore}},
    {KRIssueUnusualSuffix,
     "KRIssueName_UnusualSuffix"_kr,
     nullptr,
     false,
     {KRHandleNameAddSupport, KRHandleNameDeleteProperty, KRHandleNameIgnore}},
    {KRIssueSpacingInTheFirstName,
     "KRIssueName_SpacingInTheFirstName"_kr,
     nullptr,
     false,
     {KRHandleNameRemoveSpace, KRHandleNameIgnore}},
    {KRIssueHasCompanyNameNoTitle,
     nullptr,
     "Has company name but no title"_kr,
     false,
     {KRHandleNameEdit, KRHandleNameIgnore}},
    {KRIssueNoteWithSpacingOnly,
     "KRIssueName_NoteWithSpacingOnly"_kr,
     nullptr,
     false,
     {KRHandleNameEdit, KRHandleNameIgnore}},
};

KRString textOf(const Row& row) {
  return row.key.isNothing() ? row.text : KRSupportFuction::loadString(row.key);
}

const KRArchiveClass& archiveClass() {
  static constexpr KRArchiveClass kClass{
      "KRIssueManager", [](KRKeyedUnarchiver& coder) { return KRRef<KRObject>(KRIssueManager::initWithCoder(coder)); }};
  return kClass;
}

/// What the archive of a manager holds.
class Choice : public KRObject {
 public:
  explicit Choice(KRStringList names) : names_(std::move(names)) {}
  KRText archiveClassName() const override { return archiveClass().name; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    coder.encode(KRValueList::ofTexts(names_), kUsedNamesKey);
  }

 private:
  KRStringList names_;
};

}  // namespace

KRSharedInstance<KRIssueManager>& KRIssueManager::shared() {
  static auto& instance = *new KRSharedInstance<KRIssueManager>(makeShared);
  return instance;
}

KRRef<KRIssueManager> KRIssueManager::makeShared() {
  auto manager = krSettingsAs<KRIssueManager>(krStoredSettings(kPreferencesKey, archiveClass()));
  const bool isStored = static_cast<bool>(manager);
  if (!isStored) {
    manager = krMake<KRIssueManager>();
    manager->useAll();
  }
  manager->isShared_ = true;
  manager->saved_ = issueNamesByIssues(&manager->useItemArray_);
  if (isStored) return manager;
  // No doing of the user's that could be undone.
  const KRUndoRecorder::Pause pause;
  manager->saveToUserDefault();
  return manager;
}

KRIssueManager& KRIssueManager::shareIssueManager() {
  return shared().get();
}

void KRIssueManager::reloadShared() {
  shared().forget();
}

KRIssueManager::KRIssueManager() {
  initSupportIssues();
}

KRRef<KRIssueManager> KRIssueManager::init() {
  auto manager = krMake<KRIssueManager>();
  manager->useAll();
  const KRUndoRecorder::Pause pause;
  manager->saveToUserDefault();
  return manager;
}

KRRef<KRIssueManager> KRIssueManager::initWithCoder(KRKeyedUnarchiver& coder) {
  auto manager = krMake<KRIssueManager>();
  KRStringList names;
  const KRValue stored = coder.decode(kUsedNamesKey);
  if (const auto* list = stored.as<KRValueList>()) {
    // What is no text is kept as nothing: a name that no issue has.
    for (const KRValue& name : list->values()) names.push_back(name.text());
  }
  manager->initCurIssuesWithNames(names);
  return manager;
}

KRRef<KRIssueManager> KRIssueManager::unarchive(std::string_view data) {
  return krSettingsAs<KRIssueManager>(krUnarchivedSettings(data, archiveClass()));
}

void KRIssueManager::initSupportIssues() {
  for (const Row& row : kCatalogue) {
    const auto issue = krMake<KRIssue>(row.name, textOf(row), textOf(row));
    issue->setMultiPerson(row.multiPerson);
    for (const KRString& handle : row.handles) {
      if (!handle.isNothing()) issue->addHandle(KRIssueHandle::issueHandleWithName(handle).get());
    }
    supoortItemArray_.append(issue);
  }
}

void KRIssueManager::useAll() {
  for (KRIssue& issue : supoortItemArray_) useItemArray_.append(&issue);
}

bool KRIssueManager::isUseIssue(const KRIssue* issue) const {
  return useItemArray_.contains(issue);
}

void KRIssueManager::setUseIssues(const KRIssueList* issues) {
  // The list given may be the used list itself.
  const auto given = issues != nullptr ? issues->copy() : std::vector<KRRef<KRIssue>>();
  useItemArray_.removeAll();
  for (const auto& issue : given) useItemArray_.append(issue);
  sortUseArray();
  saved_.reset();
  saveToUserDefault();
}

void KRIssueManager::addUseIssues(const KRIssueList* issues) {
  if (issues == nullptr) return;
  for (const auto& issue : issues->copy()) {
    if (!isUseIssue(issue.get())) useItemArray_.append(issue);
  }
  sortUseArray();
  saveToUserDefault();
}

void KRIssueManager::addUseIssue(KRIssue* issue) {
  if (issue == nullptr || isUseIssue(issue)) return;
  useItemArray_.append(issue);
  sortUseArray();
  saveToUserDefault();
}

void KRIssueManager::removeUseIssues(const KRIssueList* issues) {
  if (issues == nullptr) return;
  for (const auto& issue : issues->copy()) useItemArray_.remove(issue.get());
  saveToUserDefault();
}

void KRIssueManager::removeUseIssue(const KRIssue* issue) {
  if (!isUseIssue(issue)) return;
  useItemArray_.remove(issue);
  saveToUserDefault();
}

void KRIssueManager::clearUseIssue() {
  useItemArray_.removeAll();
  saved_.reset();
  saveToUserDefault();
}

void KRIssueManager::sortUseArray() {
  const auto used = useItemArray_.copy();
  useItemArray_.removeAll();
  for (KRIssue& issue : supoortItemArray_) {
    const bool isUsed = std::any_of(used.begin(), used.end(), [&](const auto& each) { return each.get() == &issue; });
    if (isUsed) useItemArray_.append(&issue);
  }
}

KRIssue* KRIssueManager::supportIssueByName(KRText name) const {
  for (KRIssue& issue : supoortItemArray_) {
    if (sameText(issue.name(), name)) return &issue;
  }
  return nullptr;
}

void KRIssueManager::initCurIssuesWithNames(const KRStringList& names) {
  for (const KRString& name : names) {
    KRIssue* issue = supportIssueByName(name);
    if (issue == nullptr) {
      useItemArray_.removeAll();
      useAll();
      return;
    }
    useItemArray_.append(issue);
  }
}

KRStringList KRIssueManager::issueNamesByIssues(const KRIssueList* issues) {
  KRStringList names;
  if (issues == nullptr) return names;
  for (const KRIssue& issue : *issues) names.push_back(issue.name());
  return names;
}

void KRIssueManager::saveToUserDefault() {
  const KRStringList mine = issueNamesByIssues(&useItemArray_);
  krUpdateSettings(kPreferencesKey, archiveClass(), [mine, saved = saved_](const KRRef<KRObject>& stored) {
    const auto theirs = krSettingsAs<KRIssueManager>(stored);
    const KRStringList there = theirs ? issueNamesByIssues(&theirs->useItemArray_) : KRStringList();
    if (!theirs || !saved || there == *saved) return KRRef<KRObject>(krMake<Choice>(mine));
    theirs->useItemArray_.removeAll();
    theirs->initCurIssuesWithNames(krMergedTexts(there, *saved, mine));
    theirs->sortUseArray();
    return KRRef<KRObject>(theirs);
  });
  if (isShared_) saved_ = mine;
}

KRText KRIssueManager::archiveClassName() const {
  return archiveClass().name;
}

void KRIssueManager::encodeWithCoder(KRKeyedArchiver& coder) const {
  Choice(issueNamesByIssues(&useItemArray_)).encodeWithCoder(coder);
}
