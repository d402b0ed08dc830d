#include "contacts/vcard/KRVCardNote.h"

KRText KRVCardNote::sentence() const noexcept {
  switch (reason) {
    case KRVCardReason::CutOff:
      return "the card is cut off before its end";
    case KRVCardReason::Junk:
      return "the lines belong to no card";
    case KRVCardReason::NoColon:
      return "the line has no colon";
    case KRVCardReason::BadDate:
      return "the date cannot be read";
    case KRVCardReason::BadPhoto:
      return "the picture cannot be read";
    case KRVCardReason::TooLarge:
      return "the card is too large";
  }
  return {};
}
