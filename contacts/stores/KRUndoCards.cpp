#include "contacts/stores/KRUndoCards.h"

#include <algorithm>
#include <map>

#include "contacts/stores/KRDesktopLine.h"
#include "contacts/undo/KRUndoFields.h"
#include "contacts/undo/KRUndoMark.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

/// Lines that say nothing about the contact.
constexpr std::string_view kUnmarked[] = {"BEGIN", "END", "VERSION", "PRODID", "REV", "UID"};

bool isMarked(const KRVCardLine& line) {
  return std::none_of(std::begin(kUnmarked), std::end(kUnmarked),
                      [&](std::string_view name) { return krEqualsIgnoringCase(line.name(), name); });
}

uint64_t markOfLine(const KRVCardLine& line) {
  const bool isPicture = line.means(KRVCardMeaning::Photo) || krEqualsIgnoringCase(line.name(), "LOGO");
  return isPicture ? krUndoMark(line.value) : KRDesktopLine(line).stamp();
}

std::string inSmallLetters(std::string_view name) {
  std::string letters(name);
  for (char& letter : letters) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return letters;
}

}  // namespace

std::optional<uint64_t> KRUndoCards::Card::markBefore() const {
  return before.empty() ? std::nullopt : std::optional(markOf(before));
}

std::string KRUndoCards::called() const {
  std::string called(name.view());
  if (!place.isNothing() && !place.isEmpty()) called.append(" (").append(place.view()).append(")");
  return called;
}

std::string KRUndoCards::keyOf(const Card& card) const {
  return std::string(ID.view()) + "#" + card.UID;
}

std::vector<KRUndoChange> KRUndoCards::changes() const {
  std::vector<KRUndoChange> changes;
  for (const Card& card : cards) changes.push_back({keyOf(card), card.markBefore(), card.after});
  return changes;
}

std::string KRUndoCards::fields() const {
  KRUndoWriter fields;
  fields.add(ID).add(name).add(place).add(static_cast<int64_t>(cards.size()));
  for (const Card& card : cards) {
    fields.addBytes(card.UID).addBytes(card.before);
    fields.add(int64_t{card.after ? 1 : 0}).addMark(card.after.value_or(0));
  }
  return fields.take();
}

std::optional<KRUndoCards> KRUndoCards::read(std::string_view bytes) {
  KRUndoReader fields(bytes);
  KRUndoCards done;
  done.ID = KRString(fields.text());
  done.name = KRString(fields.text());
  done.place = KRString(fields.text());
  const int64_t count = fields.number();
  for (int64_t i = 0; i < count && fields.isOk(); ++i) {
    Card card;
    card.UID = fields.bytes();
    card.before = fields.bytes();
    const bool isThere = fields.number() != 0;
    const uint64_t mark = fields.mark();
    if (isThere) card.after = mark;
    done.cards.push_back(std::move(card));
  }
  if (!fields.isOk() || !fields.isAtEnd()) return std::nullopt;
  return done;
}

uint64_t KRUndoCards::markOf(std::string_view card) {
  std::map<std::string, uint64_t> marks;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(card, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (!isMarked(line)) continue;
    uint64_t& mark = marks[inSmallLetters(line.name())];
    mark = krUndoMark(mark, markOfLine(line));
  }
  uint64_t sum = 0;
  for (const auto& [name, mark] : marks) sum += krUndoMark(krUndoMark(name), mark);
  return sum;
}
