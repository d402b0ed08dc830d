#include "app/Unsaved.h"

#include <gtest/gtest.h>

#include <string>

#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRFile.h"
#include "tests/contacts/KRTrashSetting.h"

namespace {

class UnsavedTest : public KRTrashSetting {
 protected:
  void put(std::string_view content) const {
    const std::string path = folder_.at("a");
    KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(std::string_view(path), content);
    ASSERT_TRUE(note);
    ASSERT_TRUE(KRFile::write(std::string_view(path), content));
    note->keep();
  }

  const KRError full_ = {KRErrorCode::NoSpace, "the disk is full"};
};

TEST_F(UnsavedTest, SaysThatNothingIsDoneOnlyWhenAllIsAsItWas) {
  EXPECT_EQ(notSaved("nothing is fixed", 0, full_), "nothing is fixed: the disk is full");
  const KRUndoRecorder recorder("fix");
  put("one");
  const int64_t writes = KRUndoRecorder::count();
  EXPECT_EQ(notSaved("nothing is fixed", writes, full_), "nothing is fixed: the disk is full");
  put("two");
  EXPECT_EQ(notSaved("nothing is fixed", writes, full_),
            "it is done in part only: the disk is full; \"krcontacts undo\" takes back what is done");
  put("one");
  EXPECT_EQ(notSaved("nothing is fixed", writes, full_), "nothing is fixed: the disk is full");
}

}  // namespace
