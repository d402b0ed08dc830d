#pragma once

#include <string>
#include <vector>

#include "app/FixSession.h"
#include "contacts/KRAddressBookManager.h"
#include "contacts/KRTrashAddressBook.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueManager.h"
#include "issues/KRIssueNames.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRPrivatePreferences.h"

/// A book in memory, an empty trash, and what the detectors find in the book: where walks through findings begin.
class Walk : public KRTrashSetting {
 protected:
  Walk() {
    trashBook().clear();
    KRAddressBookManager::ShareAddressBookManager()->addAddressBook(book_.get());
  }
  ~Walk() override { trashBook().clear(); }

  static KRTrashAddressBook& trashBook() { return *KRTrashAddressBook::ShareTrashAddressBook(); }

  KRAddressBook& book() const { return *book_; }
  KRRef<ABPerson> add(std::string_view lines) {
    const auto person = record(lines);
    book_->addPerson(person.get());
    return person;
  }

  /// Looks for these issues of the catalogue, in this order.
  void scan(const std::vector<KRString>& issues) {
    result_->setAddressBook(book_);
    for (const KRString& name : issues) {
      const KRRef<KRIssue> issue(KRIssueManager::shareIssueManager().supportIssueByName(name));
      const auto context = KRIssueFind::issueFindWithIssue(issue.get())->find(&book_->allPersons(), [](double) {});
      if (context) result_->addContext(context.get());
    }
  }

  const KRRef<KRIssueFindResult>& result() const { return result_; }
  KRRef<KRIssueObject> finding(size_t context, size_t place = 0) const {
    return KRRef<KRIssueObject>(result_->contexts().at(context)->objects().at(place));
  }

  /// Everything that a walk may change: the contacts of the book and of the trash, and each finding with its contacts.
  std::vector<std::string> state() const {
    std::vector<std::string> all;
    for (const IKRPerson& person : book_->allPersons()) all.push_back("book " + krShownByReading(person));
    for (const IKRPerson& person : trashBook().allPersons()) all.push_back("trash " + krShownByReading(person));
    for (const KRIssueContext& context : result_->contexts()) {
      for (const KRIssueObject& each : context.objects()) all.push_back(textOf(each));
    }
    for (const IKRPerson& person : book_->allPersons()) all.push_back("indexed " + indexOf(person));
    return all;
  }

 private:
  static std::string textOf(const KRIssueObject& finding) {
    std::string text(finding.issue()->name().view());
    const KRPersonArray persons = finding.persons();
    for (const IKRPerson* person : persons) text.append(" ").append(person->ID().view());
    return text;
  }
  /// The findings under the contact, in no order.
  std::string indexOf(const IKRPerson& person) const {
    std::vector<std::string> texts;
    if (const auto* findings = result_->issueObjectsOfPerson(&person)) {
      for (const KRIssueObject& each : *findings) texts.push_back(textOf(each));
    }
    std::sort(texts.begin(), texts.end());
    std::string all;
    for (const std::string& text : texts) all += text + "; ";
    return all;
  }

  const KRPrivatePreferences preferences_;
  KRRef<KRAddressBook> book_ = krMake<KRAddressBook>("walk"_kr, "Walk"_kr);
  KRRef<KRIssueFindResult> result_ = krMake<KRIssueFindResult>();
};

inline constexpr std::string_view kBell = "N:Bell;Mary Jane;;;\r\nFN:Mary Jane Bell\r\nUID:bell\r\n";
inline constexpr std::string_view kCole = "N:Cole;Sue Ann;;;\r\nFN:Sue Ann Cole\r\nUID:cole\r\n";
inline constexpr std::string_view kDale = "N:Dale;Tim;;;\r\nFN:Tim Dale\r\nTEL:ask Jo\r\nUID:dale\r\n";
inline constexpr std::string_view kNobody = "N:;;;;\r\nTEL:7\r\nUID:nobody\r\n";
inline constexpr std::string_view kAnn1 = "N:Barrow;Ann;;;\r\nFN:Ann Barrow\r\nTEL:1\r\nUID:ann1\r\n";
inline constexpr std::string_view kAnn2 = "N:Barrow;Ann;;;\r\nFN:Ann Barrow\r\nTEL:2\r\nUID:ann2\r\n";
inline constexpr std::string_view kAnn3 = "N:Barrow;Ann;;;\r\nFN:Ann Barrow\r\nTEL:1\r\nUID:ann3\r\n";
