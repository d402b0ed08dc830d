#include "issues/KRIgnoredFindings.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "platform/KRFile.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/support/KRFindings.h"

namespace {

class KRIgnoredFindingsTest : public KRTrashSetting {
 protected:
  static constexpr KRString kBook = "vcard:/some\tbook"_kr;

  static KRIgnoredFindings read() {
    auto ignored = KRIgnoredFindings::ofBook(kBook);
    EXPECT_TRUE(ignored) << (ignored ? "" : ignored.error().sentence);
    return *std::move(ignored);
  }

  /// A result with a finding of two issues about each of the names.
  static KRRef<KRIssueFindResult> found(const std::vector<const char*>& names) {
    std::vector<KRRef<KRIssueObject>> blank;
    std::vector<KRRef<KRIssueObject>> note;
    for (const char* name : names) {
      const auto person = krNamed(name);
      blank.push_back(krFinding({person}, "is blank"));
      note.push_back(krFinding({person, krNamed("other")}, "has a note"));
    }
    return krResult({krContext(blank, KRIssueBlankName), krContext(note, KRIssueNoteWithSpacingOnly)});
  }
  static const KRIssueObject& finding(const KRRef<KRIssueFindResult>& result, size_t context, size_t place) {
    return *result->contexts().at(context)->objects().at(place);
  }
  static std::string file() { return std::string(KRIgnoredFindings::path(kBook).view()); }
  static size_t count(const KRRef<KRIssueFindResult>& result) {
    size_t all = 0;
    for (const KRIssueContext& context : result->contexts()) all += context.objects().count();
    return all;
  }
};

TEST_F(KRIgnoredFindingsTest, AtFirstThereIsNoneAndNoFile) {
  KRIgnoredFindings ignored = read();
  EXPECT_TRUE(ignored.entries().empty());
  EXPECT_TRUE(ignored.save());
  EXPECT_FALSE(std::filesystem::exists(trashFolder()));
  const auto result = found({"a"});
  EXPECT_EQ(ignored.takeOutOf(*result), 0U);
  EXPECT_EQ(count(result), 2U);
}

TEST_F(KRIgnoredFindingsTest, WhatIsAddedIsKnownAgainByAnotherReading) {
  const auto result = found({"a", "b\\\t\n\r"});
  KRIgnoredFindings ignored = read();
  EXPECT_TRUE(ignored.add(finding(result, 0, 1)));
  EXPECT_FALSE(ignored.add(finding(result, 0, 1)));
  EXPECT_TRUE(read().entries().empty());
  ASSERT_TRUE(ignored.save());
  EXPECT_FALSE(ignored.hasChanges());
  const KRIgnoredFindings again = read();
  ASSERT_EQ(again.entries().size(), 1U);
  EXPECT_EQ(again.entries()[0].persons, "b\\\t\n\r");
  EXPECT_EQ(again.entries()[0].describe, "is blank");
  EXPECT_EQ(again.entries()[0].issueName, KRIssueBlankName);
  EXPECT_EQ(again.entries()[0].date.view().size(), 10U);
  EXPECT_FALSE(KRIgnoredFindings::ofBook("other"_kr)->holds(finding(result, 0, 1)));
}

TEST_F(KRIgnoredFindingsTest, TakesFindingsContextsAndTheirIndexOut) {
  const auto result = found({"a", "a"});
  KRIgnoredFindings ignored = read();
  const KRRef<IKRPerson> person(finding(result, 0, 0).persons().first());
  ignored.add(finding(result, 0, 0));
  // The same name once more is the same to the key.
  EXPECT_EQ(ignored.takeOutOf(*result), 2U);
  EXPECT_EQ(result->contexts().count(), 1U);
  EXPECT_EQ(count(result), 2U);
  EXPECT_EQ(result->issueObjectsOfPerson(person.get())->count(), 1U);
}

TEST_F(KRIgnoredFindingsTest, WhatOthersWroteMeanwhileStays) {
  const auto result = found({"a"});
  KRIgnoredFindings first = read();
  KRIgnoredFindings second = read();
  first.add(finding(result, 0, 0));
  second.add(finding(result, 1, 0));
  ASSERT_TRUE(first.save());
  ASSERT_TRUE(second.save());
  EXPECT_EQ(second.entries().size(), 2U);
  first.forget(first.entries()[0].key);
  ASSERT_TRUE(first.save());
  ASSERT_EQ(first.entries().size(), 1U);
  EXPECT_EQ(first.entries()[0].issueName, KRIssueNoteWithSpacingOnly);
}

TEST_F(KRIgnoredFindingsTest, ForgettingWhatIsNotSavedLeavesNothing) {
  const auto result = found({"a"});
  KRIgnoredFindings ignored = read();
  ignored.add(finding(result, 0, 0));
  ignored.forget(ignored.entries()[0].key);
  EXPECT_FALSE(ignored.hasChanges());
  EXPECT_FALSE(ignored.holds(finding(result, 0, 0)));
  ignored.forget("nobody"_kr);
  EXPECT_FALSE(ignored.hasChanges());
}

TEST_F(KRIgnoredFindingsTest, ADamagedFileIsToldAndNotReplaced) {
  const auto result = found({"a"});
  KRIgnoredFindings ignored = read();
  ignored.add(finding(result, 0, 0));
  ASSERT_TRUE(ignored.save());
  const std::string whole = KRTestFolder::contentOf(file());
  for (size_t size = 1; size < whole.size(); ++size) {
    std::ofstream(file(), std::ios::binary) << whole.substr(0, size);
    const auto cut = KRIgnoredFindings::ofBook(kBook);
    // Cut behind a line it is a file of fewer findings.
    const bool isShorter = size == whole.find('\n', whole.find('\n') + 1) + 1;
    ASSERT_EQ(cut.isOk(), isShorter) << size;
    if (isShorter) continue;
    EXPECT_EQ(cut.error().code, KRErrorCode::Damaged);
    ignored.add(finding(result, 1, 0));
    ASSERT_FALSE(ignored.save());
    EXPECT_TRUE(ignored.hasChanges());
    EXPECT_EQ(KRTestFolder::contentOf(file()), whole.substr(0, size));
  }
}

TEST_F(KRIgnoredFindingsTest, WhatCannotBeWrittenStaysInMemory) {
  const auto result = found({"a"});
  KRIgnoredFindings ignored = read();
  ignored.add(finding(result, 0, 0));
  bool isFull = true;
  KRFile::setFault([&](KRFile::Step step) { return isFull && step == KRFile::Step::WritePiece ? ENOSPC : 0; });
  const auto failed = ignored.save();
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, KRErrorCode::NoSpace);
  EXPECT_FALSE(std::filesystem::exists(file()));
  isFull = false;
  EXPECT_TRUE(ignored.save());
  KRFile::setFault({});
  EXPECT_EQ(read().entries().size(), 1U);
}

TEST_F(KRIgnoredFindingsTest, ThoseOfAllBooksAreInTheOrderOfTheirIdentifiers) {
  EXPECT_TRUE(KRIgnoredFindings::ofAllBooks().empty());
  const auto result = found({"a", "b"});
  for (const KRString& book : {"c"_kr, kBook, "b"_kr}) {
    KRIgnoredFindings ignored = *KRIgnoredFindings::ofBook(book);
    ignored.add(finding(result, 0, book == "b"_kr ? 1 : 0));
    ASSERT_TRUE(ignored.save());
  }
  KRIgnoredFindings emptied = *KRIgnoredFindings::ofBook("c"_kr);
  emptied.forget(KRString(emptied.entries().front().key));
  ASSERT_TRUE(emptied.save());
  std::filesystem::rename(file(), std::string(KRIgnoredFindings::path("other"_kr).view()));
  const auto all = KRIgnoredFindings::ofAllBooks();
  ASSERT_EQ(all.size(), 2U);
  ASSERT_TRUE(all[0]);
  EXPECT_EQ(all[0]->bookID(), "b"_kr);
  EXPECT_EQ(all[0]->entries().size(), 1U);
  // A file under the name of another book's.
  ASSERT_FALSE(all[1]);
  EXPECT_EQ(all[1].error().code, KRErrorCode::Damaged);
}

}  // namespace
