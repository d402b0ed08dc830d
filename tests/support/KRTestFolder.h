#pragma once

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

/// A folder for one test, taken away with all that is in it.
class KRTestFolder {
 public:
  KRTestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kr-folder-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
  }
  ~KRTestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  KRTestFolder(const KRTestFolder&) = delete;
  KRTestFolder& operator=(const KRTestFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string at(const std::string& name) const { return path_ + "/" + name; }

  void put(const std::string& name, std::string_view content) const {
    std::ofstream(at(name), std::ios::binary) << content;
  }
  std::string content(const std::string& name) const { return contentOf(at(name)); }

  static std::string contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

 private:
  std::string path_;
};
