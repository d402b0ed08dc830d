#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "contacts/KRTrashAddressBook.h"
#include "platform/KRHostInfo.h"
#include "tests/support/KRTestFolder.h"

/// A place of its own for the trash's file, for the time of a test.
class KRTrashSetting : public testing::Test {
 protected:
  KRTrashSetting() {
    const char* data = getenv("XDG_DATA_HOME");
    before_ = data == nullptr ? "" : data;
    setenv("XDG_DATA_HOME", folder_.at("data").c_str(), 1);
    KRHostInfo::setIdentifier("org.example.trash"_kr);
  }
  ~KRTrashSetting() override {
    setenv("XDG_DATA_HOME", before_.c_str(), 1);
    KRHostInfo::setIdentifier({});
  }

  /// Where the file must stand.
  std::string trashFolder() const { return folder_.at("data/org.example.trash"); }
  std::string trashFile() const { return trashFolder() + "/trashFile.data"; }
  std::string content() const { return KRTestFolder::contentOf(trashFile()); }
  void putTrash(std::string_view bytes) const {
    std::filesystem::create_directories(trashFolder());
    folder_.put("data/org.example.trash/trashFile.data", bytes);
  }
  /// The other files in the trash's folder, sorted.
  std::vector<std::string> others() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(trashFolder())) {
      if (entry.path().filename() != "trashFile.data") names.push_back(entry.path().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  /// A trash as a new process would find it.
  static KRRef<KRTrashAddressBook> trash() { return krMake<KRTrashAddressBook>(); }

  static KRRef<ABPerson> record(std::string_view lines) {
    const std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n" + std::string(lines) + "END:VCARD\r\n";
    return ABPerson::initWithVCardRepresentation(KRText(std::string_view(card)));
  }

  KRTestFolder folder_;

 private:
  std::string before_;
};
