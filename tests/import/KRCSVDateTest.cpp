#include "import/KRCSVDate.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string read(std::string_view text, std::optional<bool> isDayFirst = true) {
  KRCSVDateReader reader;
  reader.setDayFirst(isDayFirst);
  const auto date = reader.read(text);
  return date ? std::string(date->description().view()) : "none";
}

TEST(KRCSVDate, ReadsTheFormsThatFilesHave) {
  const struct {
    const char* text;
    const char* date;
  } kRows[] = {
      {"1990-03-02", "1990-03-02"},
      {"19900302", "1990-03-02"},
      {"1990/03/02", "1990-03-02"},
      {"1990.3.2", "1990-03-02"},
      {"1990-03-02T00:00:00Z", "1990-03-02"},
      {"1990-03-02 12:30", "1990-03-02"},
      {"2.3.1990", "1990-03-02"},
      {"02.03.1990", "1990-03-02"},
      {"2/3/1990", "1990-03-02"},
      {"31/1/1972", "1972-01-31"},
      {"1/31/1972", "1972-01-31"},
      {"1/20/81", "1981-01-20"},
      {"8.7.65", "1965-07-08"},
      {"1.2.03", "2003-02-01"},
      {" 2.3.1990 ", "1990-03-02"},
      {"2. 3. 1990", "1990-03-02"},
      {"--04-14", "--04-14"},
      {"--0414", "--04-14"},
      {"--02-29", "--02-29"},
      {"1604-04-14", "--04-14"},
      {"2/3/1604", "--03-02"},
      {"0/0/00", "none"},
      {"0000-00-00", "none"},
      {"1990-13-01", "none"},
      {"30.2.1990", "none"},
      {"13.13.1990", "none"},
      {"1990", "none"},
      {"", "none"},
      {"soon", "none"},
      {"1/2/3/4", "none"},
      {"1-2", "none"},
      {"--", "none"},
      {"//", "none"},
      {"1990-03-0x", "none"},
  };
  for (const auto& row : kRows) EXPECT_EQ(read(row.text), row.date) << row.text;
}

TEST(KRCSVDate, TakesTheOrderFromTheHostThenFromTheColumn) {
  EXPECT_EQ(read("2/3/1990", false), "1990-02-03");
  EXPECT_EQ(read("2.3.1990", false), "1990-03-02") << "full stops always mean the day first";
  KRCSVDateReader months;
  EXPECT_FALSE(months.isCertain());
  months.learn("1/2/1990");
  months.learn("13.1.1990");
  months.learn("1990-01-13");
  EXPECT_FALSE(months.isCertain());
  months.learn("1/20/1990");
  EXPECT_TRUE(months.isCertain());
  EXPECT_FALSE(months.isDayFirst());
  EXPECT_EQ(months.read("1/2/1990")->description(), "1990-01-02");
  KRCSVDateReader days;
  days.learn("20-1-90");
  EXPECT_TRUE(days.isDayFirst());
}

TEST(KRCSVDate, KnowsEmptyDates) {
  for (const char* none : {"", " ", "0/0/00", "0000-00-00", "0000-00-00 00:00:00"})
    EXPECT_TRUE(KRCSVDateReader::isNone(none));
  for (const char* some : {"1", "x", "0000-00-01"}) EXPECT_FALSE(KRCSVDateReader::isNone(some));
}

TEST(KRCSVDate, PutsThreeColumnsTogether) {
  EXPECT_EQ(KRCSVDateReader::of("1972", "1", "31")->description(), "1972-01-31");
  EXPECT_EQ(KRCSVDateReader::of("", "01", "31")->description(), "--01-31");
  EXPECT_EQ(KRCSVDateReader::of("0", "Jan", " 31 ")->description(), "--01-31");
  EXPECT_EQ(KRCSVDateReader::of("1972", "september", "3")->description(), "1972-09-03");
  EXPECT_FALSE(KRCSVDateReader::of("1977", "2", "31"));
  EXPECT_FALSE(KRCSVDateReader::of("1977", "", "1"));
  EXPECT_FALSE(KRCSVDateReader::of("x", "1", "1"));
}

}  // namespace
