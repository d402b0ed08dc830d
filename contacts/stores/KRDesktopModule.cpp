#include "contacts/stores/KRDesktopModule.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>

#include "platform/KRFile.h"

namespace {

constexpr const char* kFile = "krdesktopbooks.so";

/// The folder of the program that runs; empty when the system does not tell.
std::filesystem::path programFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

KRResult<KRDesktopService*> load() {
  const std::string path(KRDesktopModule::path().view());
  if (path.empty())
    return KRError{KRErrorCode::NotFound, "the plug-in for the desktop's address books is not installed"};
  // Never unloaded: threads of its libraries may still run.
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (module == nullptr) {
    const char* reason = dlerror();
    return KRError{KRErrorCode::Failed, "cannot load " + path + (reason == nullptr ? "" : ": " + std::string(reason))};
  }
  auto* function = reinterpret_cast<KRDesktopServiceFunction*>(dlsym(module, "krDesktopService"));
  KRDesktopService* service = function == nullptr ? nullptr : function(kKRDesktopServiceVersion);
  if (service == nullptr) return KRError{KRErrorCode::Failed, path + " belongs to another version of this library"};
  return service;
}

}  // namespace

bool KRDesktopModule::isBuilt() noexcept {
  return KR_HAS_DESKTOP_PLUGIN != 0;
}

KRString KRDesktopModule::path() {
  if (!isBuilt()) return {};
  const std::filesystem::path program = programFolder();
  std::error_code error;
  for (const std::filesystem::path& folder :
       {program / "plugins", program / ".." / KR_PLUGIN_FOLDER, std::filesystem::path(KR_PLUGIN_FULL_FOLDER)}) {
    const std::filesystem::path file = folder / kFile;
    if (folder.is_absolute() && std::filesystem::is_regular_file(file, error)) return KRString(file.string());
  }
  return {};
}

KRResult<KRDesktopService*> KRDesktopModule::service() {
  static auto* const lock = new std::mutex;
  static KRDesktopService* loaded = nullptr;
  const std::lock_guard guard(*lock);
  if (loaded == nullptr) {
    KRResult<KRDesktopService*> found = load();
    if (!found) return found;
    loaded = *found;
  }
  return loaded;
}

bool KRDesktopModule::hasSessionBus() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && *address != '\0') return true;
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || *folder != '/') return false;
  const std::string socket = std::string(folder) + "/bus";
  return KRFile::kind(std::string_view(socket)) == KRFile::Kind::Other;
}

KRResult<std::unique_ptr<KRDesktopBook>> KRDesktopModule::open(KRText bookID) {
  if (bookID.view().substr(0, kPrefix.size()) != kPrefix) {
    return KRError{KRErrorCode::NotFound, "there is no such address book of the desktop"};
  }
  if (!hasSessionBus()) return KRError{KRErrorCode::NotFound, "there is no desktop session"};
  const KRResult<KRDesktopService*> known = service();
  if (!known) return known.error();
  std::unique_ptr<KRDesktopBook> book;
  if (KRDesktopFailure failure = (*known)->open(std::string(bookID.view().substr(kPrefix.size())), book)) {
    return *std::move(failure);
  }
  return book;
}
