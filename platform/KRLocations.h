#pragma once

#include "platform/KRString.h"

/// Where things are kept for this user. Every folder is absolute, without a '/' at its end, shared with other programs
/// (a host makes its own folder inside), and not made by asking.
///
/// They follow the XDG base directories: the environment variable when it holds an absolute path, else the usual folder
/// under the home folder. The environment variable `KRCONTACTS_HOME` moves all of them at once, to the folders
/// "config", "data" and "cache" inside the folder that it names (a relative one counts from the current folder), so
/// that tests and careful users never touch the real ones.
///
/// Read from the environment at every call. Nothing when neither the environment nor the user's account tells a home
/// folder. Thread-safe as long as no other thread changes the environment.
class KRLocations {
 public:
  /// Settings: `XDG_CONFIG_HOME`, else ".config".
  static KRString configurationFolder();
  /// The user's application support, such as the trash: `XDG_DATA_HOME`, else ".local/share".
  static KRString applicationSupportFolder();
  /// What can be made again: `XDG_CACHE_HOME`, else ".cache".
  static KRString cacheFolder();
};
