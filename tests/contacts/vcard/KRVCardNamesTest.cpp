#include "contacts/vcard/KRVCardNames.h"

#include <gtest/gtest.h>

namespace {

constexpr KRVCardVersion kVersions[] = {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40};

TEST(KRVCardNames, PropertiesOfOneTextHaveLines) {
  EXPECT_EQ(krTextLineName(KROrdinal::JobTitle), "TITLE");
  EXPECT_EQ(krTextLineName(KROrdinal::PhoneticLastName), "X-PHONETIC-LAST-NAME");
  EXPECT_EQ(krTextLineName(KROrdinal::Phone), "X-KR-TEXT");
}

TEST(KRVCardNames, TypesAreTheVersionsOwn) {
  EXPECT_NE(krKnownTypes(KROrdinal::Phone, KRVCardVersion::V30).find(" bbs "), std::string_view::npos);
  EXPECT_EQ(krKnownTypes(KROrdinal::Phone, KRVCardVersion::V40).find(" bbs "), std::string_view::npos);
  EXPECT_NE(krKnownTypes(KROrdinal::RelatedName, KRVCardVersion::V40).find(" co-worker "), std::string_view::npos);
  EXPECT_EQ(krKnownTypes(KROrdinal::RelatedName, KRVCardVersion::V21), "");
  for (const KRVCardVersion version : kVersions) EXPECT_EQ(krKnownTypes(KROrdinal::Note, version), "");
}

TEST(KRVCardNames, LabelsOfTheDesktopAreKnownAsItWritesThem) {
  EXPECT_TRUE(krIsBuiltInLabel("HomePage"));
  EXPECT_TRUE(krIsBuiltInLabel("Assistant"));
  EXPECT_FALSE(krIsBuiltInLabel("homepage"));
  EXPECT_FALSE(krIsBuiltInLabel(""));
}

TEST(KRVCardNames, SomeServicesHaveLinesOfTheOldestVersion) {
  EXPECT_EQ(krServiceLineName21("xmpp"), "X-JABBER");
  EXPECT_EQ(krServiceLineName21("groupwise"), "X-GROUPWISE");
  EXPECT_EQ(krServiceLineName21("facebook"), "");
  EXPECT_EQ(krServiceLineName21(""), "");
}

TEST(KRVCardNames, PicturesAreToldByTheirFirstBytes) {
  EXPECT_EQ(krPictureKind("\xFF\xD8\xFF\xE0"), "jpeg");
  EXPECT_EQ(krPictureKind("\x89PNG\r\n"), "png");
  EXPECT_EQ(krPictureKind("GIF89a"), "gif");
  EXPECT_EQ(krPictureKind("BM"), "bmp");
  EXPECT_EQ(krPictureKind("RIFF"), "webp");
  EXPECT_EQ(krPictureKind("x\x89PNG"), "");
  EXPECT_EQ(krPictureKind(""), "");
}

}  // namespace
