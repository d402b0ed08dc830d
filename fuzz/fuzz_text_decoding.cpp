// Any bytes become well-formed text, whatever they seem to be, and the text can be read again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/KRFatal.h"
#include "platform/KRString.h"
#include "platform/KRTextDecoding.h"

namespace {

void require(bool holds, const char* what) {
  if (!holds) KRFatal(what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const KRTextEncoding guess = krGuessEncoding(bytes);
  const auto decoded = krDecodeText(bytes, KRDecodeOptions::westernFallback());
  require(decoded.has_value(), "every byte has a meaning in the last resort");
  require(krIsWellFormed(decoded->utf8), "decoded text is well-formed");
  require(guess == KRTextEncoding::Other || decoded->encoding == guess, "the guess is what is decoded");
  if (guess == KRTextEncoding::Utf8 && !decoded->hadMark) require(decoded->utf8 == bytes, "UTF-8 stays as it is");
  const auto back = krEncodeWith(KRText(std::string_view(decoded->utf8)), "UTF-16LE");
  require(back && krDecodeWith(*back, "UTF-16LE").has_value(), "text can be written and read again");

  // The first line as the name of a charset, the rest as its text.
  const std::size_t line = bytes.find('\n');
  if (line == std::string_view::npos) return 0;
  const std::string name = krWellFormed(bytes.substr(0, line));
  const auto named = krDecodeWith(bytes.substr(line + 1), KRText(std::string_view(name)));
  if (named) require(krIsWellFormed(*named), "text of a named charset is well-formed");
  return 0;
}
