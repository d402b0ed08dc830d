#include "platform/KRFileStamp.h"

#include <sys/stat.h>

#include <string>

std::optional<KRFileStamp> KRFileStamp::of(KRText path) {
  struct stat status = {};
  if (path.isEmpty() || path.contains('\0') || stat(std::string(path.view()).c_str(), &status) != 0)
    return std::nullopt;
  KRFileStamp stamp;
  stamp.device = status.st_dev;
  stamp.number = status.st_ino;
  stamp.size = status.st_size;
  stamp.seconds = status.st_mtim.tv_sec;
  stamp.nanoseconds = status.st_mtim.tv_nsec;
  return stamp;
}
