#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "contacts/stores/KRMacAddressBook.h"

/// Has the adaptor list these books, and no others, for the time of a test.
class KRListedBooks {
 public:
  /// A provider of sources that are told to it.
  class Provider : public KRAddressBookProvider {
   public:
    explicit Provider(std::vector<KRBookSource> sources) : given(std::move(sources)) {}
    std::vector<KRBookSource> sources() override { return given; }

    std::vector<KRBookSource> given;
  };

  explicit KRListedBooks(std::vector<KRBookSource> sources)
      : provider_(std::make_shared<Provider>(std::move(sources))),
        before_(KRMacAddressBook::setProviders({provider_})) {}
  ~KRListedBooks() { KRMacAddressBook::setProviders(before_); }
  KRListedBooks(const KRListedBooks&) = delete;
  KRListedBooks& operator=(const KRListedBooks&) = delete;

  Provider* operator->() const { return provider_.get(); }

  /// A book in memory, a new one each time it is opened.
  static KRBookSource book(KRString ID) {
    KRBookSource source = {ID, ID, "memory"_kr, {}, {}};
    source.open = [ID] { return KRRef<KRAddressBook>(krMake<KRAddressBook>(ID, ID)); };
    return source;
  }
  /// A book that cannot be opened.
  static KRBookSource broken(KRString ID) {
    KRBookSource source = {ID, "Broken"_kr, "sqlite"_kr, "/some/where"_kr, {}};
    source.open = [] { return KRError{KRErrorCode::Damaged, "the library is damaged"}; };
    return source;
  }

 private:
  std::shared_ptr<Provider> provider_;
  std::vector<std::shared_ptr<KRAddressBookProvider>> before_;
};
