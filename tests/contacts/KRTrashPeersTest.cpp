// The trash's file in another program: its root is the list, and the persons stand in it.
#include <cstdio>
#include <memory>

#include "tests/contacts/KRTrashSetting.h"

namespace {

using KRTrashPeers = KRTrashSetting;

TEST_F(KRTrashPeers, PythonFindsTheListOfPersonsAtTheRoot) {
  const auto book = trash();
  book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\nTEL:1\r\n").get());
  book->addPerson(record("UID:ben\r\nN:Lee;Ben;;;\r\n").get());
  ASSERT_TRUE(book->saveNow());
  folder_.put("read.py", R"(import plistlib, sys
archive = plistlib.load(open(sys.argv[1], "rb"))
assert archive["$archiver"] == "NSKeyedArchiver" and archive["$version"] == 100000
objects = archive["$objects"]
at = lambda uid: objects[uid.data]
root = at(archive["$top"]["root"])
print(at(root["$class"])["$classname"], end=" ")
for uid in root["NS.objects"]:
    person = at(uid)
    card = at(person["vCard"])
    card = card if isinstance(card, bytes) else card["NS.data"]
    print(at(person["$class"])["$classname"], at(person["ID"]), at(person["fromID"]), "phone" in person,
          "groupIDs" in person, card.startswith(b"BEGIN:VCARD"), end=" ")
)");
  const std::string command = "python3 '" + folder_.at("read.py") + "' '" + trashFile() + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::string text;
  for (int c = std::fgetc(output.get()); c != EOF; c = std::fgetc(output.get())) text += static_cast<char>(c);
  EXPECT_EQ(text, "NSMutableArray KRTempPerson ann $null True False True KRTempPerson ben $null False False True ");
}

}  // namespace
