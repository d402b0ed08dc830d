#include "contacts/undo/KRUndoPart.h"

#include "contacts/undo/KRUndoFields.h"
#include "contacts/undo/KRUndoMark.h"
#include "platform/KRBinaryPlist.h"
#include "platform/KRFile.h"
#include "platform/KRPlistValue.h"
#include "platform/KRRegularFile.h"

namespace {

void add(KRUndoWriter& fields, const std::optional<uint64_t>& mark) {
  fields.add(int64_t{mark ? 1 : 0}).addMark(mark.value_or(0));
}

std::optional<uint64_t> optionalMark(KRUndoReader& fields) {
  const bool isThere = fields.number() != 0;
  const uint64_t mark = fields.mark();
  return isThere ? std::optional(mark) : std::nullopt;
}

/// The value as a property list of its own; nothing for nothing.
std::string plistOf(const KRValue& value) {
  KRBinaryPlist list;
  const auto root = krAddToPlist(list, value);
  if (!root) return {};
  list.setRoot(*root);
  return list.write();
}

KRValue valueOf(std::string_view plist) {
  const std::optional<KRBinaryPlist> list = KRBinaryPlist::read(plist);
  return list ? krValueOfPlist(*list, list->root()) : KRValue();
}

}  // namespace

KRResult<KRUndoPart> KRUndoPart::read(const KRUndoRecords::Run& run, int64_t number) {
  const std::string path = run.at(number, "part");
  const KRResult<KRBuffer> bytes = krReadRegularFile(std::string_view(path));
  if (!bytes && bytes.error().code == KRErrorCode::NotFound)
    return KRError{KRErrorCode::Damaged, "the undo record is damaged: " + path + " is missing"};
  if (!bytes) return bytes.error();
  KRUndoReader fields(bytes->view());
  KRUndoPart part;
  part.number = number;
  part.kind = fields.bytes();
  part.fields = fields.bytes();
  if (!fields.isOk()) return KRError{KRErrorCode::Damaged, "the undo record is damaged: " + path};
  return part;
}

KRResult<void> KRUndoPart::write(const KRUndoRecords::Run& run) const {
  KRUndoWriter whole;
  whole.addBytes(kind).addBytes(fields);
  KRFile::WriteOptions options;
  options.isPrivate = true;
  const std::string path = run.at(number, "part");
  return KRFile::write(std::string_view(path), whole.take(), options);
}

std::string KRUndoFiles::fields() const {
  KRUndoWriter fields;
  fields.addBytes(folder).addBytes(lockedAt).add(static_cast<int64_t>(files.size()));
  for (const File& file : files) {
    fields.addBytes(file.path).add(file.mode);
    add(fields, file.before);
    add(fields, file.after);
  }
  for (const File& file : files) fields.addBytes(file.link);
  return fields.take();
}

std::optional<KRUndoFiles> KRUndoFiles::read(std::string_view bytes) {
  KRUndoReader fields(bytes);
  KRUndoFiles content;
  content.folder = fields.bytes();
  content.lockedAt = fields.bytes();
  const int64_t count = fields.number();
  for (int64_t i = 0; i < count && fields.isOk(); ++i) {
    File file;
    file.path = fields.bytes();
    file.mode = fields.number();
    file.before = optionalMark(fields);
    file.after = optionalMark(fields);
    content.files.push_back(std::move(file));
  }
  // Earlier records end here.
  for (size_t i = 0; i < content.files.size() && fields.isOk() && !fields.isAtEnd(); ++i)
    content.files[i].link = fields.bytes();
  if (!fields.isOk()) return std::nullopt;
  return content;
}

std::optional<uint64_t> KRUndoPreference::markOf(const KRValue& value) {
  if (value.isNothing()) return std::nullopt;
  return krUndoMark(plistOf(value));
}

std::string KRUndoPreference::of(const KRFilePreferences::Observed& change) {
  KRUndoWriter fields;
  fields.add(change.path).add(change.key).addBytes(plistOf(change.before)).addBytes(plistOf(change.after));
  return fields.take();
}

std::optional<KRUndoPreference> KRUndoPreference::read(std::string_view bytes) {
  KRUndoReader fields(bytes);
  KRUndoPreference change;
  change.path = fields.bytes();
  change.key = KRString(fields.text());
  change.before = valueOf(fields.bytes());
  change.after = valueOf(fields.bytes());
  if (!fields.isOk()) return std::nullopt;
  return change;
}
