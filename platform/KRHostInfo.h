#pragma once

#include "platform/KRString.h"

/// Who uses the library. Thread-safe.
class KRHostInfo {
 public:
  /// The name under which this host keeps its preferences and data: what it set, else the name of the executable file.
  /// Nothing only when the system does not tell the latter.
  static KRString identifier();

  /// The identifier as the name of a file or folder, whatever it holds: a '/' in it becomes '_', and no identifier is
  /// "(null)".
  static KRString fileName();

  /// The folder for the data of this host: named by `fileName`, in the folder for application support. Not made by
  /// asking. Nothing when there is no such folder.
  static KRString dataFolder();

  /// Sets the identifier, such as "org.example.contacts"; best done before anything else of the library is used, since
  /// what was read under the former identifier stays in memory. It becomes the name of a folder, so it should hold no
  /// '/'. Nothing or empty goes back to the executable's name.
  static void setIdentifier(KRString identifier);
};
