#include "contacts/undo/KRUndoRecorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "contacts/undo/KRUndoPart.h"
#include "contacts/undo/KRUndoRecords.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "tests/contacts/KRTrashSetting.h"

namespace {

class KRUndoRecorderTest : public KRTrashSetting {
 protected:
  /// Writes the file as those do who keep a user's data.
  void put(const std::string& name, std::string_view content) const {
    const std::string path = folder_.at(name);
    KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(std::string_view(path), content);
    ASSERT_TRUE(note);
    ASSERT_TRUE(KRFile::write(std::string_view(path), content));
    note->keep();
  }
  void remove(const std::string& name) const {
    const std::string path = folder_.at(name);
    KRResult<KRUndoNote> note = KRUndoRecorder::recordRemoval(std::string_view(path));
    ASSERT_TRUE(note);
    ASSERT_TRUE(KRFile::remove(std::string_view(path)));
    note->keep();
  }
  /// How many parts the record of a run has; nothing when there is no record.
  static std::optional<size_t> partsOf(const std::function<void()>& run) {
    {
      const KRUndoRecorder recorder("run");
      run();
    }
    const auto runs = KRUndoRecords::all().value();
    if (runs.empty()) return std::nullopt;
    const size_t parts = runs.front().parts.size();
    EXPECT_TRUE(KRUndoRecords::remove(runs.front()));
    return parts;
  }
};

TEST_F(KRUndoRecorderTest, KeepsARecordOfWhatIsOtherThanBefore) {
  EXPECT_EQ(partsOf([&] { put("a", "one"); }), 1U);
  EXPECT_EQ(partsOf([&] {
              put("a", "two");
              put("a", "three");
            }),
            2U);
  EXPECT_EQ(partsOf([&] { remove("a"); }), 1U);
}

TEST_F(KRUndoRecorderTest, KeepsNoneOfARunThatEndsAsItBegan) {
  folder_.put("a", "one");
  EXPECT_FALSE(partsOf([] {}));
  EXPECT_FALSE(partsOf([&] { put("a", "one"); }));
  EXPECT_FALSE(partsOf([&] {
    put("a", "two");
    put("a", "one");
  }));
  EXPECT_FALSE(partsOf([&] {
    put("new", "two");
    put("a", "two");
    put("a", "three");
    remove("new");
    put("a", "one");
  }));
}

TEST_F(KRUndoRecorderTest, KeepsAllOfARunOfWhichSomethingStands) {
  folder_.put("a", "one");
  EXPECT_EQ(partsOf([&] {
              put("a", "two");
              put("new", "");
              put("a", "one");
            }),
            3U);
}

TEST_F(KRUndoRecorderTest, KeepsNoneOfWritesThatWereGivenUp) {
  folder_.put("a", "one");
  EXPECT_FALSE(partsOf([&] {
    const std::string path = folder_.at("a");
    const auto note = KRUndoRecorder::recordFile(std::string_view(path), "two");
    EXPECT_TRUE(note);
  }));
}

TEST_F(KRUndoRecorderTest, KeepsNoneWhileOneOfTheSameNumberIsStillBeingRemoved) {
  folder_.put("a", "one");
  const std::string records(KRUndoRecords::folder().view());
  for (const char* gone : {"/gone-000001", "/gone-000001-1"})
    std::filesystem::create_directories(records + gone + "/x");
  EXPECT_FALSE(partsOf([&] {
    put("a", "two");
    put("a", "one");
  }));
  EXPECT_FALSE(std::filesystem::exists(records + "/gone-000001"));
}

TEST_F(KRUndoRecorderTest, ARunThatEndsWhileOthersPruneStays) {
  KRUndoRecords::Run prepared;
  prepared.folder = folder_.path();
  prepared.parts = {1};
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(KRUndoRecords::write(prepared));
    std::optional<KRUndoRecords::Held> begun = KRUndoRecords::begin("run", false).value();
    const KRUndoRecords::Run run = begun->run;
    std::atomic<bool> isOver{false};
    std::thread others([&] {
      while (!isOver) KRUndoRecords::prune(time(nullptr));
    });
    // Many files, so that the look at a record takes long, and a last write that takes no time.
    for (int file = 0; file < 500; ++file) std::ofstream(run.at(1, std::to_string(file)));
    std::filesystem::rename(prepared.folder + "/run", run.folder + "/run");
    begun.reset();
    isOver = true;
    others.join();
    EXPECT_TRUE(std::filesystem::exists(run.folder)) << i;
    EXPECT_TRUE(KRUndoRecords::remove(run));
  }
}

TEST_F(KRUndoRecorderTest, ARunIsHeldAsItIsWhenItHasEnded) {
  std::optional<KRUndoRecords::Run> listed;
  {
    const KRUndoRecorder recorder("run");
    put("a", "one");
    listed = KRUndoRecords::all().value().front();
    EXPECT_EQ(KRUndoRecords::hold(*listed).error().code, KRErrorCode::Busy);
    put("b", "two");
  }
  EXPECT_EQ(listed->parts.size(), 1U);
  EXPECT_EQ(KRUndoRecords::hold(*listed).value().run.parts.size(), 2U);
}

TEST_F(KRUndoRecorderTest, ARunWhoseNumberIsAnotherOnesIsNotHeld) {
  const auto runOf = [&](const char* title, const char* content) {
    const KRUndoRecorder recorder(title);
    put("a", content);
  };
  runOf("first", "one");
  const KRUndoRecords::Run first = KRUndoRecords::all().value().front();
  EXPECT_TRUE(KRUndoRecords::remove(first));
  EXPECT_EQ(KRUndoRecords::hold(first).error().code, KRErrorCode::NotFound);
  runOf("second", "two");
  const KRUndoRecords::Run second = KRUndoRecords::all().value().front();
  ASSERT_EQ(second.number, first.number);
  EXPECT_EQ(KRUndoRecords::hold(first).error().code, KRErrorCode::NotFound);
  EXPECT_TRUE(KRUndoRecords::hold(second));
}

TEST_F(KRUndoRecorderTest, ARunThatIsLookedAtByWhoPrunesIsHeldAfterwards) {
  {
    const KRUndoRecorder recorder("run");
    put("a", "one");
  }
  const KRUndoRecords::Run run = KRUndoRecords::all().value().front();
  std::optional<KRFileLock> pruning = KRFileLock::hold(KRUndoRecords::folder()).value();
  std::optional<KRFileLock> looking = KRFileLock::hold(std::string_view(run.folder)).value();
  std::atomic<bool> asks{false};
  bool isHeld = false;
  std::thread undo([&] {
    asks = true;
    isHeld = KRUndoRecords::hold(run).isOk();
  });
  while (!asks) std::this_thread::yield();
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  looking.reset();
  pruning.reset();
  undo.join();
  EXPECT_TRUE(isHeld);
}

TEST_F(KRUndoRecorderTest, TellsWhatIsOtherThanItWas) {
  folder_.put("a", "one");
  EXPECT_FALSE(KRUndoRecorder::hasChangedSince(0));
  const KRUndoRecorder recorder("run");
  const std::string path = folder_.at("a");
  const auto before = [&](int64_t count) { return KRUndoRecorder::contentBefore(std::string_view(path), count); };
  EXPECT_EQ(before(0).error().code, KRErrorCode::NotFound);
  put("a", "two");
  const int64_t count = KRUndoRecorder::count();
  EXPECT_FALSE(KRUndoRecorder::hasChangedSince(count));
  put("a", "three");
  put("new", "x");
  EXPECT_TRUE(KRUndoRecorder::hasChangedSince(count));
  EXPECT_EQ(before(0)->view(), "one");
  EXPECT_EQ(before(count)->view(), "two");
  EXPECT_EQ(before(KRUndoRecorder::count()).error().code, KRErrorCode::NotFound);
  remove("new");
  put("a", "two");
  EXPECT_FALSE(KRUndoRecorder::hasChangedSince(count));
  EXPECT_TRUE(KRUndoRecorder::hasChangedSince(0));
}

TEST_F(KRUndoRecorderTest, ADroppedNoteIsNoPartOfTheRecord) {
  folder_.put("a", "one");
  EXPECT_FALSE(partsOf([&] {
    const std::string path = folder_.at("a");
    KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(std::string_view(path), "two");
    ASSERT_TRUE(note);
    folder_.put("a", "one");
    note->drop();
  }));
}

TEST_F(KRUndoRecorderTest, ARecordThatIsDamagedIsOneThatCannotBePutBack) {
  {
    const KRUndoRecorder recorder("run");
    put("a", "two");
  }
  const std::string file = KRUndoRecords::all().value().front().folder + "/run";
  const std::string content = KRTestFolder::contentOf(file);
  for (const size_t size : {size_t{0}, size_t{9}, content.size() - 1}) {
    std::filesystem::resize_file(file, size);
    const auto runs = KRUndoRecords::all().value();
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs.front().damage, KRText(std::string_view(file)));
    EXPECT_TRUE(runs.front().parts.empty());
  }
  std::filesystem::remove(file);
  EXPECT_EQ(KRUndoRecords::all().value().front().damage, KRText(std::string_view(file + " is missing")));
}

TEST_F(KRUndoRecorderTest, WhatIsLearntAfterTheWriteCounts) {
  const auto said = [](std::optional<uint64_t> after) {
    KRResult<KRUndoNote> note = KRUndoRecorder::record(KRUndoPart::kCards, "before", {{"card", 1, 2}});
    ASSERT_TRUE(note);
    note->keep(KRUndoPart::kCards, "after", {{"card", 1, after}});
  };
  EXPECT_FALSE(partsOf([&] { said(1); }));
  {
    const KRUndoRecorder recorder("run");
    said(3);
  }
  const auto runs = KRUndoRecords::all().value();
  ASSERT_EQ(runs.size(), 1U);
  const auto part = KRUndoPart::read(runs.front(), 1);
  ASSERT_TRUE(part);
  EXPECT_EQ(part->fields, "after");
}

}  // namespace
