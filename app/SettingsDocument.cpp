#include "app/SettingsDocument.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "app/Setting.h"
#include "app/Unusable.h"

namespace {

using Json = nlohmann::ordered_json;

const Setting* settingWithKey(std::string_view key) {
  for (const auto& setting : Setting::all()) {
    if (setting->key() == key) return setting.get();
  }
  return nullptr;
}

TextList textsOf(const Json& value, const std::string& key, const std::string& source) {
  TextList texts;
  bool isList = value.is_array();
  if (isList) {
    for (const Json& each : value) {
      isList = isList && each.is_string();
      if (each.is_string()) texts.push_back(each.get<std::string>());
    }
  }
  if (!isList) throw Unusable(source + ": \"" + key + "\" is not a list of texts");
  return texts;
}

}  // namespace

std::string SettingsDocument::text() {
  Json document = Json::object();
  for (const auto& setting : Setting::all()) document[std::string(setting->key())] = setting->values();
  return document.dump(2) + "\n";
}

void SettingsDocument::take(std::string_view document, const std::string& source) {
  const Json json = Json::parse(document, nullptr, false);
  if (!json.is_object()) throw Unusable(source + ": this is not a JSON document of settings");
  std::vector<std::pair<const Setting*, TextList>> changes;
  for (const auto& [key, value] : json.items()) {
    const Setting* setting = settingWithKey(key);
    if (setting == nullptr) throw Unusable(std::string(source).append(": there is no setting \"").append(key) + "\"");
    changes.emplace_back(setting, textsOf(value, key, source));
    setting->check(changes.back().second);
  }
  if (changes.empty()) throw Unusable(source + ": the document holds no setting");
  for (const auto& [setting, values] : changes) setting->set(values);
}
