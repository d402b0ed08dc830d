#pragma once

#include <string>
#include <string_view>

/// The settings as a JSON document, for other machines and for safe keeping.
namespace SettingsDocument {

std::string text();

/// Takes the settings that the document holds; those that it does not name stay as they are. Throws `Unusable`, which
/// names `source`, when the document is not one of settings; nothing changes then.
void take(std::string_view document, const std::string& source);

}  // namespace SettingsDocument
