// An archived person in other programs: the keyed archive's structure is whole, and the values stand where they belong.
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdio>
#include <memory>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectPersonName.h"
#include "platform/KRKeyedArchiver.h"
#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

namespace {

std::string archivedPerson() {
  const auto person = krMake<KRTempPerson>("p-1"_kr);
  const KRProperty* name = KRProperty::propertyWithName(KRProPertyName);
  const KRValue ann(krMake<KRObjectPersonName>("Ann"_kr, nullptr, "李"_kr));
  person->setValue(krSingleValue(ann, *name), name);
  const auto phones = krMake<KRMutableMultipleValue>();
  for (const KRString& number : {"+1 555 0100"_kr, "+1 555 0101"_kr}) {
    phones->addValue(krMake<KRMutableSingleValue>(KRValue(krMake<KRObjectPhone>(number)), krMake<KRLabel>("home"_kr),
                                                  KRValueType::Phone));
  }
  person->setValue(phones, KRProPertyPhone);
  person->setFromID("book"_kr);
  person->setGroupIDs(KRStringList{"friends"_kr});
  return KRKeyedArchiver::archivedData(KRValue(person));
}

std::string readByPython(const std::string& archive) {
  const KRTestFolder folder;
  folder.put("person.plist", archive);
  const std::string command =
      "python3 '" KR_SOURCE_DIR "/tests/platform/plist_peer.py' archive '" + folder.at("person.plist") + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::string text;
  for (int c = std::fgetc(output.get()); c != EOF; c = std::fgetc(output.get())) text += static_cast<char>(c);
  return text;
}

/// A text as the script writes it: an s, then its bytes in hexadecimal.
std::string written(std::string_view text) {
  std::string result = "s";
  for (const char c : text) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
    result += digits;
  }
  return result;
}

TEST(KRPersonArchivePeers, PythonFindsTheWholePerson) {
  const std::string text = readByPython(archivedPerson());
  EXPECT_TRUE(text.starts_with("KRTempPerson>NSObject{")) << text;
  for (const auto& field : {"ID=" + written("p-1"), "fromID=" + written("book"), "first=" + written("Ann"),
                            "last=" + written("李"), "phoneNumber=" + written("+1 555 0101")}) {
    EXPECT_NE(text.find(field), std::string::npos) << field << " in " << text;
  }
  EXPECT_NE(text.find("groupIDs="), std::string::npos) << text;
}

TEST(KRPersonArchivePeers, AnotherLibraryReadsTheSameStructure) {
  const std::string archive = archivedPerson();
  plist_t read = nullptr;
  plist_from_bin(archive.data(), static_cast<uint32_t>(archive.size()), &read);
  const std::unique_ptr<void, void (*)(void*)> plist(read, plist_free);
  ASSERT_NE(read, nullptr);
  uint64_t version = 0;
  plist_get_uint_val(plist_dict_get_item(read, "$version"), &version);
  EXPECT_EQ(version, 100000U);
  uint64_t root = 0;
  plist_get_uid_val(plist_access_path(read, 2, "$top", "root"), &root);
  const plist_t objects = plist_dict_get_item(read, "$objects");
  ASSERT_LT(root, plist_array_get_size(objects));
  const plist_t person = plist_array_get_item(objects, static_cast<uint32_t>(root));
  uint64_t place = 0;
  plist_get_uid_val(plist_dict_get_item(person, "ID"), &place);
  EXPECT_STREQ(plist_get_string_ptr(plist_array_get_item(objects, static_cast<uint32_t>(place)), nullptr), "p-1");
  EXPECT_NE(plist_dict_get_item(person, "phone"), nullptr);
  EXPECT_EQ(plist_dict_get_item(person, "email"), nullptr);
}

}  // namespace
