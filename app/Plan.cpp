#include "app/Plan.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "app/DisplayText.h"
#include "app/HandleNames.h"
#include "app/IssueNames.h"
#include "app/PlanValues.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "issues/KRIssueManager.h"
#include "platform/KRFile.h"

namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;
/// A longer text is no name, and would be a long line in a message.
constexpr size_t kLongestName = 100;

/// One value of the document, which knows where it stands.
class Place {
 public:
  Place(const Json& value, const std::string& file, std::string where)
      : value_(value), file_(file), where_(std::move(where)) {}

  const Json& value() const noexcept { return value_; }
  const std::string& where() const noexcept { return where_; }

  [[noreturn]] void refuse(const std::string& reason) const {
    throw Unusable(file_ + ": " + (where_.empty() ? "the document" : where_) + ": " + reason);
  }

  /// The object's members are these and no others; those in front are required.
  void checkMembers(std::initializer_list<std::string_view> required,
                    std::initializer_list<std::string_view> optional) const {
    if (!value_.is_object()) refuse("an object is expected");
    for (const std::string_view name : required) {
      if (!value_.contains(name)) refuse("there is no \"" + std::string(name) + "\"");
    }
    for (const auto& [name, member] : value_.items()) {
      const auto is = [&, &key = name](std::string_view known) { return known == key; };
      if (std::none_of(required.begin(), required.end(), is) && std::none_of(optional.begin(), optional.end(), is)) {
        refuse("\"" + fittedText(shownText(name), kLongestName) + "\" is not known here");
      }
    }
  }

  bool has(std::string_view name) const { return value_.contains(name); }
  Place operator[](std::string_view name) const {
    return {value_.at(std::string(name)), file_, where_ + "/" + std::string(name)};
  }
  Place operator[](size_t index) const { return {value_.at(index), file_, where_ + "/" + std::to_string(index)}; }

  const std::string& text() const {
    if (!value_.is_string()) refuse("a text is expected");
    return value_.get_ref<const std::string&>();
  }
  std::string textOrNothing() const { return value_.is_null() ? std::string() : text(); }
  const std::string& name() const {
    if (text().size() > kLongestName) refuse("this is no name");
    return text();
  }
  size_t count() const {
    if (!value_.is_array()) refuse("a list is expected");
    return value_.size();
  }

 private:
  const Json& value_;
  const std::string& file_;
  std::string where_;
};

/// "12:5", the line and column of a byte, from 1.
std::string lineAndColumn(std::string_view text, size_t byte) {
  const std::string_view before = text.substr(0, std::min(text.size(), byte == 0 ? 0 : byte - 1));
  const size_t lines = static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
  const size_t start = before.rfind('\n');
  const size_t column = start == std::string_view::npos ? before.size() : before.size() - start - 1;
  return std::to_string(lines + 1) + ":" + std::to_string(column + 1);
}

/// Refuses a name that stands twice in an object: which of the two is meant cannot be told.
class Names {
 public:
  explicit Names(const std::string& file) : file_(file) {}

  bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::object_start) known_.emplace_back();
    if (event == Json::parse_event_t::object_end) known_.pop_back();
    if (event == Json::parse_event_t::key && !known_.back().insert(parsed.get<std::string>()).second) {
      const std::string name = fittedText(shownText(parsed.get<std::string>()), kLongestName);
      throw Unusable(file_ + ": \"" + name + "\" stands twice in one object");
    }
    return true;
  }

 private:
  const std::string& file_;
  /// Of the objects that are open.
  std::vector<std::unordered_set<std::string>> known_;
};

Json parsed(std::string_view text, const std::string& file) {
  const std::string noJson = ": this is no JSON document";
  try {
    Json document = Json::parse(text, Names(file));
    // A zero counts as the end there, and nothing behind it would be read.
    if (const size_t zero = text.find('\0'); zero != std::string_view::npos)
      throw Unusable(file + ":" + lineAndColumn(text, zero + 1) + noJson);
    return document;
  } catch (const Json::parse_error& error) {
    throw Unusable(file + ":" + lineAndColumn(text, error.byte) + noJson);
  } catch (const Json::exception&) {
    throw Unusable(file + ": there is a number in it that is too large");
  }
}

FixChoice choiceIn(const Place& fix) {
  FixChoice choice;
  const Place issue = fix["issue"];
  const std::string& issueWord = issue.name();
  if (issueWord.find(',') != std::string::npos) issue.refuse("one issue is expected");
  try {
    const KRString name = IssueNames::resolve({issueWord}).front();
    choice.issue = KRRef<KRIssue>(KRIssueManager::shareIssueManager().supportIssueByName(name));
  } catch (const Unusable& error) {
    issue.refuse(error.what());
  }
  const Place handle = fix["handle"];
  const std::string& handleWord = handle.name();
  try {
    choice.handle = FixChoices::handleFor(*choice.issue, HandleNames::resolve(handleWord));
  } catch (const Unusable& error) {
    handle.refuse(error.what());
  }
  return choice;
}

std::vector<Plan::Person> personsIn(const Place& persons, const KRIssue& issue) {
  const size_t count = persons.count();
  if (issue.multiPerson() && count < 2) persons.refuse("a finding of this issue is about two contacts or more");
  if (!issue.multiPerson() && count != 1) persons.refuse("a finding of this issue is about one contact");
  std::vector<Plan::Person> found;
  std::unordered_set<std::string> known;
  for (size_t i = 0; i < count; ++i) {
    const Place person = persons[i];
    person.checkMembers({"id", "digest"}, {"name"});
    found.push_back({person["id"].text(), person["digest"].text()});
    if (person.has("name")) static_cast<void>(person["name"].textOrNothing());
    if (!known.insert(found.back().ID).second) person["id"].refuse("the contact stands there twice");
  }
  return found;
}

Plan::Fix fixIn(const Place& place) {
  place.checkMembers({"issue", "handle", "persons"}, {"describe", "info", "values"});
  Plan::Fix fix;
  fix.choice = choiceIn(place);
  fix.persons = personsIn(place["persons"], *fix.choice.issue);
  if (place.has("info")) {
    fix.info = place["info"].textOrNothing();
  } else if (sameText(fix.choice.handle->name(), KRHandleNameAddSupport)) {
    place.refuse("there is no \"info\", the text that is to count as usual");
  }
  if (place.has("describe")) static_cast<void>(place["describe"].textOrNothing());
  const Place first = place["persons"][size_t{0}];
  const std::string name = first.has("name") ? first["name"].textOrNothing() : std::string();
  fix.place = place.where() + " (" + IssueNames::shortName(fix.choice.issue->name()) + ", " +
              fittedText(shownText(name.empty() ? fix.persons.front().ID : name), kLongestName) + ")";
  if (place.has("values") && !place["values"].value().is_null()) {
    fix.values = place["values"].value();
    if (!sameText(fix.choice.handle->name(), KRHandleNameEdit)) {
      place["values"].refuse("only findings with the fix \"edit\" carry new values");
    }
    const std::string wrong = PlanValues::check(fix.values);
    if (!wrong.empty()) place["values"].refuse(wrong);
  }
  return fix;
}

}  // namespace

Plan Plan::read(const std::string& file) {
  const bool isInput = file == "-";
  const std::string called = isInput ? "standard input" : file;
  const KRResult<KRBuffer> bytes = isInput ? KRFile::readStandardInput() : KRFile::read(std::string_view(file));
  if (!bytes) throw Unusable(bytes.error().sentence);
  const Json document = parsed(bytes->view(), called);
  const Place root(document, called, "");
  root.checkMembers({"plan", "book", "fixes"}, {});
  if (!root["plan"].value().is_number_integer()) root["plan"].refuse("a number is expected");
  if (root["plan"].value() != kVersion) root["plan"].refuse("this version of the program reads plans of version 1");
  Plan plan;
  const Place book = root["book"];
  book.checkMembers({"id"}, {"name", "path"});
  plan.bookID = book["id"].text();
  if (book.has("path")) plan.bookPath = book["path"].textOrNothing();
  if (book.has("name")) static_cast<void>(book["name"].textOrNothing());
  const Place fixes = root["fixes"];
  const size_t count = fixes.count();
  plan.fixes.reserve(count);
  for (size_t i = 0; i < count; ++i) plan.fixes.push_back(fixIn(fixes[i]));
  return plan;
}
