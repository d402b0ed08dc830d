#include "platform/KRFileLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <optional>
#include <string>

#include "platform/KRDescriptor.h"
#include "tests/support/KRTestFolder.h"

namespace {

KRResult<KRFileLock> lockOf(const std::string& path) {
  return KRFileLock::hold(KRText(std::string_view(path)));
}

/// Whether nobody holds what is at the path.
bool isFree(const std::string& path) {
  const KRDescriptor descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return flock(descriptor.number(), LOCK_EX | LOCK_NB) == 0;
}

TEST(KRFileLock, HoldsAFileOrAFolderAsLongAsItLives) {
  const KRTestFolder folder;
  folder.put("a", "one");
  for (const std::string& path : {folder.at("a"), folder.at("")}) {
    std::optional<KRResult<KRFileLock>> lock = lockOf(path);
    ASSERT_TRUE(*lock);
    EXPECT_TRUE((*lock)->isHeld());
    EXPECT_FALSE(isFree(path));
    lock.reset();
    EXPECT_TRUE(isFree(path));
  }
}

TEST(KRFileLock, HoldsTheFileThatIsThereNow) {
  const KRTestFolder folder;
  folder.put("a", "one");
  const KRResult<KRFileLock> former = lockOf(folder.at("a"));
  folder.put("b", "two");
  std::filesystem::rename(folder.at("b"), folder.at("a"));
  EXPECT_TRUE(isFree(folder.at("a")));
  const KRResult<KRFileLock> now = lockOf(folder.at("a"));
  ASSERT_TRUE(now);
  EXPECT_FALSE(isFree(folder.at("a")));
}

TEST(KRFileLock, TellsOfWhatIsNotThere) {
  const KRTestFolder folder;
  const KRResult<KRFileLock> lock = lockOf(folder.at("missing"));
  ASSERT_FALSE(lock);
  EXPECT_EQ(lock.error().code, KRErrorCode::NotFound);
}

}  // namespace
