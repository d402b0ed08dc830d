#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "contacts/KRAddressBookManager.h"
#include "contacts/KRTrashAddressBook.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRBookMakers.h"
#include "tests/support/KRFindings.h"
#include "tests/support/KRPersonSketch.h"

/// A book of a kind with persons in it, an empty trash, and a result of the book's findings.
class KRBookFixture : public KRTrashSetting, public testing::WithParamInterface<KRBookMaker> {
 protected:
  KRBookFixture() { trashBook()->clear(); }
  ~KRBookFixture() override { trashBook()->clear(); }

  static KRTrashAddressBook* trashBook() { return KRTrashAddressBook::ShareTrashAddressBook(); }

  /// Makes the book, the first time, and fills it; one that keeps its persons is saved and opened again, so that they
  /// are such as were read. Their identifiers are in the order of the sketches, as some stores have it.
  void fill(const std::vector<KRPersonSketch>& sketches) {
    if (!book_) GetParam().make(folder_);
    book_ = GetParam().open(folder_);
    ASSERT_TRUE(book_);
    for (size_t i = 0; i < sketches.size(); ++i) {
      const auto person = record("UID:person-" + std::to_string(1000 + i) + "\r\n");
      book_->addPerson(person.get());
      krFill(*person, sketches[i]);
    }
    if (GetParam().keeps) {
      ASSERT_TRUE(book_->saveNow());
      book_ = GetParam().open(folder_);
    }
    ASSERT_EQ(book_->allPersonsCount(), sketches.size());
    result_->setAddressBook(book_);
  }

  KRAddressBook& book() const { return *book_; }
  KRIssueFindResult& result() const { return *result_; }
  KRRef<IKRPerson> person(size_t place) const { return KRRef<IKRPerson>(book_->allPersons().at(place)); }

  /// A finding of the issue about the persons at these places of the book, in a context of its own, with a new handle
  /// of that name.
  KRRef<KRIssueObject> finding(const KRString& handleName, const KRString& issueName,
                               const std::vector<size_t>& places) {
    std::vector<KRRef<IKRPerson>> persons;
    for (const size_t place : places) persons.push_back(person(place));
    auto made = krFinding(persons);
    made->setHandle(KRIssueHandle::issueHandleWithName(handleName));
    result_->addContext(krContext({made}, issueName).get());
    return made;
  }

  /// Fixes the finding about these persons, and expects that it is gone from the result.
  void fix(const KRString& handleName, const KRString& issueName, const std::vector<size_t>& places = {0}) {
    const auto made = finding(handleName, issueName, places);
    made->fix();
    EXPECT_FALSE(isListed(made));
  }

  bool isListed(const KRRef<KRIssueObject>& object) const {
    for (const KRIssueContext& context : result_->contexts()) {
      if (context.objects().contains(object.get())) return true;
    }
    return false;
  }

  /// What the person shows, and what all persons of a book show, in its order.
  static std::string shown(const IKRPerson& person) { return krShownByReading(person); }
  static std::vector<std::string> shown(KRAddressBook& book) {
    std::vector<std::string> all;
    for (const IKRPerson& person : book.allPersons()) all.push_back(shown(person));
    return all;
  }

  /// Saves the book and opens it again where it keeps its persons, and expects that it shows the same.
  void expectKept() {
    const auto before = shown(book());
    ASSERT_TRUE(book_->saveNow());
    EXPECT_EQ(shown(book()), before);
    expectStored(before);
  }

  /// Expects that the book, opened again where it keeps its persons, shows these.
  void expectStored(std::vector<std::string> expected) const {
    if (!GetParam().keeps) return;
    auto stored = shown(*GetParam().open(folder_));
    if (!GetParam().keepsOrder) {
      std::sort(stored.begin(), stored.end());
      std::sort(expected.begin(), expected.end());
    }
    EXPECT_EQ(stored, expected);
  }

  /// The names shown of the persons in the book, respectively in the trash.
  std::vector<std::string> names() const { return namesIn(*book_); }
  static std::vector<std::string> trashed() { return namesIn(*trashBook()); }
  static std::vector<std::string> namesIn(KRAddressBook& book) {
    std::vector<std::string> all;
    for (const IKRPerson& person : book.allPersons()) all.emplace_back(person.displayName().view());
    return all;
  }

 private:
  KRRef<KRAddressBook> book_;
  KRRef<KRIssueFindResult> result_ = krMake<KRIssueFindResult>();
};
