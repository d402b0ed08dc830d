#include "contacts/vcard/KRVCardParser.h"

#include <algorithm>

#include "contacts/model/KRAddressField.h"
#include "contacts/model/KRLabelTable.h"
#include "contacts/vcard/KRVCardValues.h"

void KRVCardParser::start(const char* card, const char* end) {
  draft_.start(card, end);
  values_.start(card, end);
  isGroup_ = false;
  isOrganisation_ = false;
  hasName_ = false;
  formattedName_ = {};
  company_ = {};
  department_ = {};
  sound_ = {};
  labels_.start();
  passed_.clear();
}

void KRVCardParser::take(const KRVCardLine& line) {
  line_ = &line;
  values_.setLine(line);
  if (!line.hasName()) {
    pass(KRVCardReason::NoColon);
    return;
  }
  const KRVCardProperty& property = *line.property;
  switch (property.meaning) {
    case KRVCardMeaning::Version:
      values_.setVersion(krTrimmedBlanks(line.value));
      break;
    case KRVCardMeaning::FormattedName:
      if (formattedName_.isEmpty()) formattedName_ = decode(line.value);
      break;
    case KRVCardMeaning::Name:
      takeName();
      break;
    case KRVCardMeaning::Organisation:
      takeOrganisation();
      break;
    case KRVCardMeaning::FirstText:
      takeFirstText(property.ordinal);
      break;
    case KRVCardMeaning::Tags:
      takeTags();
      break;
    case KRVCardMeaning::Birthday:
      takeBirthday();
      break;
    case KRVCardMeaning::Phone:
      takeUnwrapped(KROrdinal::Phone, "tel:");
      break;
    case KRVCardMeaning::Email:
      takeUnwrapped(KROrdinal::Email, "mailto:");
      break;
    case KRVCardMeaning::Address:
      takeAddress();
      break;
    case KRVCardMeaning::Account:
      takeAccount();
      break;
    case KRVCardMeaning::ServiceAccount:
      takeServiceAccount(property.text);
      break;
    case KRVCardMeaning::Photo:
      takePhoto();
      break;
    case KRVCardMeaning::TextEntry:
      takeTextEntry(property.ordinal, property.text);
      break;
    case KRVCardMeaning::DateEntry:
      takeDateEntry(property.ordinal, property.text);
      break;
    case KRVCardMeaning::UID:
      takeUID();
      break;
    case KRVCardMeaning::Kind:
      takeKind();
      break;
    case KRVCardMeaning::ShowAs:
      isOrganisation_ = isOrganisation_ || krEqualsIgnoringCase(krTrimmedBlanks(line.value), "COMPANY");
      break;
    case KRVCardMeaning::GroupLabel:
      takeGiven(true);
      break;
    case KRVCardMeaning::GroupCountryCode:
      takeGiven(false);
      break;
    case KRVCardMeaning::AndroidCustom:
      takeAndroidCustom();
      break;
    case KRVCardMeaning::Sound:
      takeSound();
      break;
    case KRVCardMeaning::Agent:
    case KRVCardMeaning::Begin:
    case KRVCardMeaning::End:
    case KRVCardMeaning::Unknown:
      break;
  }
}

void KRVCardParser::takeName() {
  if (hasName_) return;
  constexpr uint8_t kParts[] = {static_cast<uint8_t>(KRCardPart::LastName), static_cast<uint8_t>(KRCardPart::FirstName),
                                static_cast<uint8_t>(KRCardPart::MiddleName), static_cast<uint8_t>(KROrdinal::Title),
                                static_cast<uint8_t>(KROrdinal::Suffix)};
  const std::vector<Place>& written = split(';');
  const std::vector<Place> unpacked = written.size() == 1 ? unpackedName(written.front()) : std::vector<Place>();
  const std::vector<Place>& parts = unpacked.empty() ? written : unpacked;
  for (size_t i = 0; i < std::min(parts.size(), std::size(kParts)); ++i) {
    if (parts[i].isEmpty()) continue;
    draft_.add(kParts[i], parts[i]);
    hasName_ = true;
  }
}

/// Some programs escape the separators too: a single part with all four of them is the whole name. Nothing for others.
std::vector<KRCardDraft::Place> KRVCardParser::unpackedName(const Place& whole) const {
  constexpr std::ptrdiff_t kSeparators = 4;
  const std::string_view text = draft_.text(whole);
  std::vector<Place> parts;
  if (std::count(text.begin(), text.end(), ';') != kSeparators) return parts;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find(';', at), text.size());
    parts.push_back(whole.part(at, end - at));
    at = end + 1;
  }
  return parts;
}

void KRVCardParser::takeOrganisation() {
  if (draft_.has(KROrdinal::Company)) return;
  const std::vector<Place>& parts = split(';');
  const Place department = parts.size() > 1 ? parts[1] : Place();
  if (!parts[0].isEmpty()) {
    draft_.add(KROrdinal::Company, parts[0]);
    company_ = parts[0];
    department_ = department;
  } else if (department_.isEmpty()) {
    department_ = department;
  }
}

void KRVCardParser::takeFirstText(KROrdinal ordinal) {
  if (draft_.has(ordinal)) return;
  const Place text = decode(line_->value);
  if (!text.isEmpty()) draft_.add(ordinal, text);
}

void KRVCardParser::takeTags() {
  for (const Place& tag : split(',')) {
    if (!tag.isEmpty()) draft_.add(KROrdinal::Tags, tag);
  }
}

KRCardDraft::Place KRVCardParser::withoutScheme(const Place& uri, std::string_view scheme) {
  const std::string_view text = draft_.text(uri);
  if (!krStartsIgnoringCase(text, scheme)) return uri;
  const Place rest = uri.part(scheme.size(), text.size() - scheme.size());
  if (draft_.text(rest).find('%') == std::string_view::npos) return rest;
  return draft_.place(krWellFormed(krDecodePercent(draft_.text(rest))));
}

void KRVCardParser::takeUnwrapped(KROrdinal ordinal, std::string_view scheme) {
  const Place value = withoutScheme(decode(line_->value), scheme);
  if (!value.isEmpty()) addEntry(ordinal, value);
}

void KRVCardParser::takeAddress() {
  const std::vector<Place>& parts = split(';');
  const size_t count = std::min(parts.size(), kKRAddressFieldCount);
  if (std::all_of(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(count),
                  [](const Place& each) { return each.isEmpty(); })) {
    return;
  }
  const Entry entry = addEntry(KROrdinal::Address, Place());
  for (size_t i = 0; i < count; ++i) {
    if (!parts[i].isEmpty()) draft_.addDetail(entry, KRCardPart::AddressField, static_cast<uint8_t>(i), 0, parts[i]);
  }
}

void KRVCardParser::takeAccount() {
  const Place value = decode(line_->value);
  const std::string text(draft_.text(value));
  const std::string_view scheme = krSchemeOf(text);
  const std::string_view user =
      krAccountUser(scheme.empty() ? std::string_view(text) : std::string_view(text).substr(scheme.size() + 1));
  if (user.empty()) return;
  const std::string& service = line_->parameters->service;
  const auto from = static_cast<size_t>(user.data() - text.data());
  const Place place = user.find('%') == std::string_view::npos ? value.part(from, user.size())
                                                               : draft_.place(krWellFormed(krDecodePercent(user)));
  addAccount(place, krServiceKey(service.empty() ? scheme : std::string_view(service)));
}

void KRVCardParser::takeServiceAccount(std::string_view service) {
  const Place user = decode(line_->value);
  if (!user.isEmpty()) addAccount(user, service);
}

void KRVCardParser::addAccount(const Place& user, std::string_view service) {
  const Entry entry = addEntry(KROrdinal::InstantMessage, user);
  if (service.empty()) return;
  const uint16_t number = KRLabelTable::number(service);
  draft_.addDetail(entry, KRCardPart::AccountService, 0, number, number == 0 ? draft_.place(service) : Place());
}

void KRVCardParser::addImage(const Place& text, uint8_t form) {
  draft_.row(draft_.add(KROrdinal::Thumbnail, text)).detail = form;
}

bool KRVCardParser::takeDataURI() {
  if (!krStartsIgnoringCase(krTrimmedBlanks(line_->value), "data:")) return false;
  const Place uri = decode(line_->value);
  const std::string_view text = draft_.text(uri);
  const size_t comma = text.find(',');
  if (comma == std::string_view::npos) {
    pass(KRVCardReason::BadPhoto);
    return true;
  }
  const Place data = uri.part(comma + 1, text.size() - comma - 1);
  const std::string_view head = krTrimmedBlanks(text.substr(0, comma));
  constexpr std::string_view kMark = ";base64";
  if (head.size() < kMark.size() || !krEqualsIgnoringCase(head.substr(head.size() - kMark.size()), kMark)) {
    if (!data.isEmpty()) addImage(draft_.place(krDecodePercent(draft_.text(data))), KRCardRow::Plain);
  } else if (krIsBase64(draft_.text(data))) {
    addImage(data, KRCardRow::Base64);
  } else {
    pass(KRVCardReason::BadPhoto);
  }
  return true;
}

void KRVCardParser::takePhoto() {
  if (draft_.has(KROrdinal::Thumbnail) || takeDataURI()) return;
  // An address of a picture is not followed.
  if (line_->parameters->isURI) return;
  const bool isDeclared = line_->parameters->encoding == KRVCardParameters::Base64;
  std::string_view raw = isDeclared ? line_->raw : line_->value;
  std::string bytes;
  if (line_->parameters->encoding == KRVCardParameters::QuotedPrintable) raw = bytes = krDecodeQuotedPrintable(raw);
  if (krIsBase64(raw) && (isDeclared || krIsPicture(krDecodeBase64(raw.substr(0, 16))))) {
    addImage(draft_.place(raw), KRCardRow::Base64);
  } else if (isDeclared && krSchemeOf(raw).empty() && !krTrimmedBlanks(raw).empty()) {
    pass(KRVCardReason::BadPhoto);
  }
}

KRCardDraft::Place KRVCardParser::dateOf(const Place& written) {
  const std::string_view text = draft_.text(written);
  std::optional<KRDate> date = krParseCardDate(text);
  // A year that somebody filled in later is no stand-in, though the parameter stayed.
  if (date && date->hasYear() && date->year() == line_->parameters->omittedYear) {
    date = KRDate::make(std::nullopt, date->month(), date->day());
  }
  if (!date) {
    if (!text.empty()) pass(KRVCardReason::BadDate);
    return {};
  }
  const std::string form = krDateText(*date);
  return form == text ? written : draft_.place(form);
}

void KRVCardParser::takeBirthday() {
  if (draft_.has(KROrdinal::Birthday)) return;
  const Place date = dateOf(decode(line_->value));
  if (!date.isEmpty()) draft_.add(KROrdinal::Birthday, date);
}

void KRVCardParser::takeTextEntry(KROrdinal ordinal, std::string_view label) {
  const Place text = decode(line_->value);
  if (text.isEmpty()) return;
  const Entry entry = addEntry(ordinal, text);
  if (draft_.row(entry).label == 0 && line_->parameters->labelText.isEmpty()) labels_.set(entry, label, draft_);
}

void KRVCardParser::takeDateEntry(KROrdinal ordinal, std::string_view label) {
  const Place date = dateOf(decode(line_->value));
  if (date.isEmpty()) return;
  const Entry entry = addEntry(ordinal, date);
  if (draft_.row(entry).label == 0 && line_->parameters->labelText.isEmpty()) labels_.set(entry, label, draft_);
}

void KRVCardParser::takeUID() {
  if (draft_.has(KRCardPart::UID)) return;
  const Place UID = decode(line_->value);
  if (!UID.isEmpty()) draft_.add(KRCardPart::UID, UID);
}

void KRVCardParser::takeKind() {
  const std::string_view kind = krTrimmedBlanks(line_->value);
  isGroup_ = isGroup_ || krEqualsIgnoringCase(kind, "group");
  isOrganisation_ = isOrganisation_ || krEqualsIgnoringCase(kind, "org") || krEqualsIgnoringCase(kind, "organization");
}

void KRVCardParser::takeGiven(bool isLabel) {
  if (!line_->hasGroup()) return;
  Place value = decode(line_->value);
  const std::string_view text = draft_.text(value);
  if (isLabel) {
    const std::string_view name = krUnwrappedLabel(text);
    value = value.part(static_cast<size_t>(name.data() - text.data()), name.size());
  }
  if (value.isEmpty()) return;
  if (isLabel) {
    labels_.giveLabel(line_->group(), value, draft_);
  } else {
    labels_.giveCountryCode(line_->group(), value, draft_);
  }
}

void KRVCardParser::takeAndroidCustom() {
  constexpr std::string_view kFamily = "vnd.android.cursor.item/";
  const std::vector<Place> parts = split(';');
  const std::string kind(draft_.text(parts[0]));
  if (parts.size() < 2 || parts[1].isEmpty() || !krStartsIgnoringCase(kind, kFamily)) return;
  const std::string_view item = std::string_view(kind).substr(kFamily.size());
  const int type = parts.size() > 2 ? krSmallNumber(draft_.text(parts[2])) : -1;
  // Type 0 is spelled out in the field behind it.
  std::string label = type == 0 && parts.size() > 3 ? std::string(draft_.text(parts[3])) : std::string();
  if (item == "nickname") {
    if (!draft_.has(KROrdinal::Nickname)) draft_.add(KROrdinal::Nickname, parts[1]);
  } else if (item == "contact_event") {
    const Place date = dateOf(parts[1]);
    if (date.isEmpty()) return;
    if (type == 3) {
      if (!draft_.has(KROrdinal::Birthday)) draft_.add(KROrdinal::Birthday, date);
      return;
    }
    if (type == 1) label = "anniversary";
    labels_.set(addEntry(KROrdinal::OtherDate, date), label, draft_);
  } else if (item == "relation") {
    if (type > 0) label = krPhoneRelation(type);
    labels_.set(addEntry(KROrdinal::RelatedName, parts[1]), label, draft_);
  }
}

void KRVCardParser::takeSound() {
  // How a Japanese phone keeps the reading of a name: in the shape of N.
  if (!line_->parameters->hasType("irmc-n")) return;
  const std::vector<Place>& parts = split(';');
  for (size_t i = 0; i < std::min(parts.size(), sound_.size()); ++i) {
    if (sound_[i].isEmpty()) sound_[i] = parts[i];
  }
}

KRCardDraft::Entry KRVCardParser::addEntry(KROrdinal ordinal, const Place& value) {
  const Entry entry = draft_.add(ordinal, value);
  labels_.add(entry, ordinal, *line_, draft_);
  return entry;
}

void KRVCardParser::finishOrganisation() {
  if (isOrganisation_) {
    draft_.add(KROrdinal::IsOrganization, draft_.place("YES"));
    if (!draft_.has(KROrdinal::Company) && !formattedName_.isEmpty()) draft_.add(KROrdinal::Company, formattedName_);
  }
  if (!department_.isEmpty()) draft_.add(KROrdinal::Department, department_);
}

void KRVCardParser::finishName() {
  constexpr KROrdinal kReadings[] = {KROrdinal::PhoneticLastName, KROrdinal::PhoneticFirstName,
                                     KROrdinal::PhoneticMiddleName};
  for (size_t i = 0; i < sound_.size(); ++i) {
    if (!sound_[i].isEmpty() && !draft_.has(kReadings[i])) draft_.add(kReadings[i], sound_[i]);
  }
  if (hasName_ || isOrganisation_ || formattedName_.isEmpty()) return;
  const std::string name(draft_.text(formattedName_));
  if (draft_.has(KROrdinal::Company) && draft_.text(company_) == name) return;
  const std::vector<KRVCardWord> words = krWordsOf(name);
  if (words.empty()) return;
  const auto word = [&](size_t i) { return formattedName_.part(words[i].begin, words[i].end - words[i].begin); };
  draft_.add(KRCardPart::FirstName, word(0));
  if (words.size() == 2) draft_.add(KRCardPart::LastName, word(1));
  if (words.size() < 3) return;
  draft_.add(KRCardPart::MiddleName, word(1));
  std::string rest;
  for (size_t i = 2; i < words.size(); ++i) {
    if (i > 2) rest.push_back(' ');
    rest.append(name, words[i].begin, words[i].end - words[i].begin);
  }
  draft_.add(KRCardPart::LastName, draft_.place(rest));
}

KRCardRecord KRVCardParser::finish(std::string_view card) {
  finishName();
  finishOrganisation();
  labels_.finish(draft_);
  return draft_.finish(card, slabs_, cards_);
}
