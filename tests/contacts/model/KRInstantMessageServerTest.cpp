#include "contacts/model/KRInstantMessageServer.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRTagManager.h"

namespace {

TEST(KRInstantMessageServer, FindsServicesByTheirShownName) {
  struct Row {
    const char* shown;
    const char* name;
  };
  constexpr Row rows[] = {{"AIM", "aim"},           {"icq", "icq"},       {"Jabber", "xmpp"}, {"XMPP", "xmpp"},
                          {"Skype", "skype"},       {"MSN", "msnim"},     {"Yahoo", "ymsgr"}, {"Google Talk", "gtalk"},
                          {"TELEGRAM", "telegram"}, {"Signal", "signal"}, {"QQ", "qq"},       {"whatsapp", "whatsapp"}};
  for (const Row& row : rows) {
    const KRInstantMessageServer* server = KRInstantMessageServer::serverWithDisplayName(row.shown);
    ASSERT_NE(server, nullptr) << row.shown;
    EXPECT_EQ(server->name(), row.name);
    EXPECT_EQ(server, KRInstantMessageServer::serverWithName(row.name));
  }
}

TEST(KRInstantMessageServer, FindsNoServiceUnderOtherNames) {
  for (const char* shown : {"", "Carrier Pigeon", "AI", "AIMs", " AIM"}) {
    EXPECT_EQ(KRInstantMessageServer::serverWithDisplayName(shown), nullptr) << shown;
  }
  EXPECT_EQ(KRInstantMessageServer::serverWithDisplayName(KRText()), nullptr);
  EXPECT_EQ(KRInstantMessageServer::serverWithName(KRText()), nullptr);
  EXPECT_EQ(KRInstantMessageServer::serverWithName(""), nullptr);
}

TEST(KRInstantMessageServer, MakesOneInstanceForAnUnknownName) {
  KRInstantMessageServer* server = KRInstantMessageServer::serverWithName("PigeonPost");
  ASSERT_NE(server, nullptr);
  EXPECT_EQ(server->name(), "pigeonpost");
  EXPECT_EQ(server->displayName(), "PigeonPost");
  EXPECT_EQ(KRInstantMessageServer::serverWithName("pigeonpost"), server);
  EXPECT_EQ(KRInstantMessageServer::serverWithDisplayName("PigeonPost"), nullptr);
}

TEST(KRInstantMessageServer, IsTheSameForAllThreads) {
  std::vector<KRInstantMessageServer*> found(8);
  std::vector<std::thread> threads;
  for (auto& place : found) {
    threads.emplace_back([&place] { place = KRInstantMessageServer::serverWithName("threads-meet-here"); });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::set<KRInstantMessageServer*>(found.begin(), found.end()).size(), 1U);
}

TEST(KRObjectInstantMessage, IsEqualByServiceAndUserName) {
  KRInstantMessageServer* aim = KRInstantMessageServer::serverWithName("aim");
  const auto account = krMake<KRObjectInstantMessage>("ann"_kr, aim);
  const auto same = krMake<KRObjectInstantMessage>("ann"_kr, aim);
  EXPECT_TRUE(account->isEqual(same.get()));
  EXPECT_EQ(account->hash(), same->hash());
  EXPECT_EQ(account->description(), same->description());
  EXPECT_FALSE(account->isEqual(krMake<KRObjectInstantMessage>("bob"_kr, aim).get()));
  EXPECT_FALSE(account->isEqual(krMake<KRObjectInstantMessage>("ann"_kr, nullptr).get()));
  EXPECT_EQ(krMake<KRObjectInstantMessage>("ann"_kr, nullptr)->server(), nullptr);
}

TEST(KRTagManager, IsSharedByIdentifier) {
  KRTagManager* manager = KRTagManager::tagManagerWithID("trash_addressbook"_kr);
  ASSERT_NE(manager, nullptr);
  EXPECT_EQ(manager->ID(), "trash_addressbook");
  EXPECT_EQ(KRTagManager::tagManagerWithID(KRString("trash_addressbook")), manager);
  EXPECT_NE(KRTagManager::tagManagerWithID("other"_kr), manager);
}

}  // namespace
