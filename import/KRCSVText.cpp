#include "import/KRCSVText.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/KRFile.h"
#include "platform/KRTextDecoding.h"

namespace {

KRDecodeOptions optionsFor(KRCSVText::Fallback fallback) {
  static constexpr std::array<std::string_view, 2> kWestern = {"windows-1252", "macintosh"};
  KRDecodeOptions options = KRDecodeOptions::plainFallbacks();
  if (fallback == KRCSVText::Fallback::Western) options.fallbacks = kWestern;
  return options;
}

}  // namespace

KRResult<KRCSVText> KRCSVText::read(KRText path, Fallback fallback) {
  KRResult<KRBuffer> bytes = KRFile::read(path);
  if (!bytes) return bytes.error();
  return of(*std::move(bytes), fallback);
}

KRCSVText KRCSVText::of(KRBuffer bytes, Fallback fallback) {
  KRCSVText text;
  const KRTextEncoding encoding = krGuessEncoding(bytes.view());
  text.mark_ = krMarkSize(bytes.view(), encoding);
  const bool isUsable = encoding == KRTextEncoding::Utf8 && (text.mark_ == 0 || krIsWellFormed(bytes.view()));
  if (!isUsable) {
    std::optional<KRDecodedText> decoded = krDecodeText(bytes.view(), optionsFor(fallback));
    text.isDecoded_ = true;
    if (decoded) {
      text.decoded_ = std::move(decoded->utf8);
      text.charset_ = std::move(decoded->charset);
    }
    return text;
  }
  text.bytes_ = std::move(bytes);
  return text;
}

std::string_view KRCSVText::view() const noexcept {
  return isDecoded_ ? std::string_view(decoded_) : bytes_.view().substr(mark_);
}
