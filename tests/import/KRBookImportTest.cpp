#include "import/KRBookImport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "tests/support/KRTestFolder.h"

namespace {

using Choice = KRBookImport::Choice;

std::string card(const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines + "END:VCARD\r\n";
}

const std::string kAnn = card("FN:Ann\r\nN:;Ann;;;\r\nTEL:1\r\nUID:ann\r\n");
const std::string kOtherAnn = card("FN:Ann\r\nN:;Ann;;;\r\nTEL:99\r\nUID:ann\r\n");
const std::string kCut = "BEGIN:VCARD\r\nFN:cut\r\n";

std::string group(const std::string& lines) {
  return card("FN:Friends\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n" + lines);
}

class KRBookImportTest : public testing::Test {
 protected:
  KRBookImportTest() {
    const auto library =
        KRSQLiteLibrary::open(KRText(std::string_view(path("library.sqlite"))), KRSQLiteLibrary::Mode::Create);
    if (!library) {
      ADD_FAILURE() << library.error().sentence;
      return;
    }
    library_ = *library;
    book_ = *library_->addBook("People");
    options_.rejects = [this](KRBookImport::Reject reject) { rejects_.push_back(std::move(reject)); };
  }

  std::string path(const std::string& name) const { return folder_.at(name); }

  /// Imports files of these contents, in one run.
  KRBookImport::Counts put(const std::vector<std::string>& contents) {
    static_cast<void>(book_->load());
    KRBookImport import(book_, options_);
    for (size_t i = 0; i < contents.size(); ++i) {
      const std::string name = std::to_string(i) + ".vcf";
      folder_.put(name, contents[i]);
      const KRResult<void> added = import.addFile(KRText(std::string_view(path(name))));
      EXPECT_TRUE(added.isOk()) << added.error().sentence;
    }
    import.addGroups();
    return import.counts();
  }

  KRTestFolder folder_;
  KRRef<KRSQLiteLibrary> library_;
  KRRef<KRStoredBook> book_;
  KRBookImport::Options options_;
  std::vector<KRBookImport::Reject> rejects_;
};

TEST_F(KRBookImportTest, CountsEachRecordOnce) {
  const auto counts = put({kAnn + kCut + kAnn + kOtherAnn + group("UID:g\r\n"), kAnn});
  EXPECT_EQ(counts.added, 1U);
  EXPECT_EQ(counts.equal, 2U);
  EXPECT_EQ(counts.conflicts, 1U);
  EXPECT_EQ(counts.lost, 1U);
  EXPECT_EQ(counts.groupsAdded, 1U);
  EXPECT_EQ(counts.all(), 6U);
  EXPECT_TRUE(counts.changesBook());
}

TEST_F(KRBookImportTest, RejectsComeInTheOrderOfTheFileWithPlaceAndBytes) {
  put({kAnn + kCut + kOtherAnn});
  ASSERT_EQ(rejects_.size(), 2U);
  EXPECT_EQ(rejects_[0].bytes, kCut);
  EXPECT_EQ(rejects_[0].card, 2U);
  EXPECT_EQ(rejects_[0].line, 8U);
  EXPECT_EQ(rejects_[1].bytes, kOtherAnn);
  EXPECT_EQ(rejects_[1].card, 3U);
  EXPECT_FALSE(rejects_[1].reason.isEmpty());
}

TEST_F(KRBookImportTest, ARejectIsToldWhoHasItsIdentifier) {
  put({kAnn + kOtherAnn, kOtherAnn});
  ASSERT_EQ(rejects_.size(), 2U);
  constexpr KRText kRest = " has a contact of the same UID with other content";
  EXPECT_EQ(rejects_[0].reason, krConcat({"the same file", kRest}));
  EXPECT_EQ(rejects_[1].reason, krConcat({KRText(std::string_view(path("0.vcf"))), kRest}));
  put({kOtherAnn});
  ASSERT_EQ(rejects_.size(), 3U);
  EXPECT_EQ(rejects_[2].reason, krConcat({"the book", kRest}));
}

std::string phonesOf(const IKRPerson& person) {
  KRHold hold;
  std::string phones;
  person.readEntries(KROrdinal::Phone, hold, [&](const KREntryView& entry) {
    phones += entry.text.view();
    return true;
  });
  return phones;
}

TEST_F(KRBookImportTest, AnUpdateTakesTheValuesAndHandsTheFormerContactOver) {
  /// Keeps what it is given as the trash does: as it is now.
  struct Former : KRAddressBook {
    Former() : KRAddressBook("former"_kr, "Former"_kr) {}
    void addPerson(IKRPerson* person) override { phones.push_back(phonesOf(*person)); }
    std::vector<std::string> phones;
  };
  const auto former = krMake<Former>();
  put({kAnn});
  options_.existing = Choice::Update;
  options_.former = former;
  EXPECT_EQ(put({kOtherAnn + kOtherAnn}).updated, 1U);
  EXPECT_EQ(former->phones, std::vector<std::string>{"1"});
  ASSERT_EQ(book_->allPersonsCount(), 1U);
  EXPECT_EQ(phonesOf(*book_->allPersons().at(0)), "99");
}

TEST_F(KRBookImportTest, WhoIsAskedDecides) {
  put({kAnn});
  options_.existing = Choice::Update;
  options_.ask = [](const ABPerson& imported, const ABPerson& existing) {
    EXPECT_EQ(phonesOf(imported), "99");
    EXPECT_EQ(phonesOf(existing), "1");
    return Choice::Skip;
  };
  EXPECT_EQ(put({kOtherAnn}).conflicts, 1U);
}

TEST_F(KRBookImportTest, BothGivesTheSecondAnIdentifierOfItsOwn) {
  options_.existing = Choice::Both;
  options_.addsEqual = true;
  EXPECT_EQ(put({kAnn + kOtherAnn + kAnn}).added, 3U);
  EXPECT_NE(book_->allPersons().at(1)->ID(), book_->allPersons().at(0)->ID());
  EXPECT_NE(book_->allPersons().at(2)->ID(), book_->allPersons().at(1)->ID());
}

TEST_F(KRBookImportTest, GroupsFindTheirMembersInEveryFileAndAmongThoseThatWereThere) {
  put({kAnn});
  const std::string bob = card("FN:Bob\r\nUID:bob\r\n");
  const std::string twin = card("FN:Ann\r\nN:;Ann;;;\r\nTEL:1\r\nUID:twin\r\n");
  const auto counts = put({group("X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:twin\r\nX-ADDRESSBOOKSERVER-MEMBER:bob\r\n"
                                 "X-ADDRESSBOOKSERVER-MEMBER:nobody\r\n"),
                           bob + twin});
  EXPECT_EQ(counts.equal, 1U);
  EXPECT_EQ(counts.memberships, 2U);
  EXPECT_EQ(counts.missingMembers, 1U);
  EXPECT_EQ(book_->allPersons().at(0)->parentGroups().size(), 1U);
  // A group without an identifier is known by its name.
  EXPECT_EQ(put({group("X-ADDRESSBOOKSERVER-MEMBER:bob\r\n")}).groupsKnown, 1U);
  EXPECT_EQ(book_->rootGroups().size(), 1U);
}

TEST_F(KRBookImportTest, AFileWithoutACardIsAnErrorAndAnEmptyOneIsNot) {
  static_cast<void>(book_->load());
  KRBookImport import(book_, options_);
  folder_.put("text.vcf", "Dear diary");
  folder_.put("empty.vcf", "\xef\xbb\xbf \r\n");
  const auto failed = import.addFile(KRText(std::string_view(path("text.vcf"))));
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, KRErrorCode::InvalidArgument);
  EXPECT_TRUE(import.addFile(KRText(std::string_view(path("empty.vcf")))).isOk());
  const auto missing = import.addFile(KRText(std::string_view(path("missing.vcf"))));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().code, KRErrorCode::NotFound);
}

KRRef<KRTempPerson> namedPerson(const KRString& first) {
  auto person = krMake<KRTempPerson>();
  person->setValue(KRTempPerson::singleValueByMacValue(krMake<KRObjectPersonName>(first, KRString(), KRString()),
                                                       KRProperty::propertyWithName(KRProPertyName)),
                   KRProPertyName);
  return person;
}

TEST_F(KRBookImportTest, TakesWhatAnotherLoaderReads) {
  static_cast<void>(book_->load());
  KRBookImport import(book_, options_);
  const auto load = [](const KRBookImport::PersonSink& persons, const KRPersonLoadNoteSink& notes) {
    persons(*namedPerson("Ann"_kr));
    notes({3, 0, true, "too short"_kr, "x"_kr});
    notes({4, 2, false, "odd"_kr});
    persons(*namedPerson("Bo"_kr));
    persons(*namedPerson("Ann"_kr));
  };
  import.addLoaded("a.csv", load);
  EXPECT_EQ(import.counts().added, 2U);
  EXPECT_EQ(import.counts().equal, 1U);
  EXPECT_EQ(import.counts().lost, 1U);
  EXPECT_EQ(import.counts().notes, 1U);
  EXPECT_EQ(import.counts().all(), 4U);
  ASSERT_EQ(rejects_.size(), 1U);
  EXPECT_EQ(rejects_[0].file, "a.csv");
  EXPECT_EQ(rejects_[0].line, 3U);
  EXPECT_EQ(rejects_[0].bytes, "x");
  ASSERT_EQ(book_->allPersonsCount(), 2U);
  EXPECT_NE(book_->allPersons().at(0)->ID(), "123");
  EXPECT_NE(book_->allPersons().at(0)->ID(), book_->allPersons().at(1)->ID());
}

TEST_F(KRBookImportTest, LoadedPersonsThatTheBookHasAreSkipped) {
  static_cast<void>(book_->load());
  for (const size_t added : {1U, 0U}) {
    KRBookImport import(book_, options_);
    import.addPerson(*namedPerson("Ann"_kr));
    EXPECT_EQ(import.counts().added, added);
    ASSERT_TRUE(book_->saveNow());
    ASSERT_TRUE(book_->readAgain());
  }
  options_.addsEqual = true;
  KRBookImport import(book_, options_);
  import.addPerson(*namedPerson("Ann"_kr));
  EXPECT_EQ(import.counts().added, 1U);
}

}  // namespace
