#include "contacts/model/KRModelArchive.h"

#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRLabel.h"
#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRMutableSingleValue.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRObjectPhone.h"

std::span<const KRArchiveClass> krModelArchiveClasses() {
  static constexpr KRArchiveClass classes[] = {
      {"KRInstantMessageServer", KRInstantMessageServer::decode},
      {"KRLabel", KRLabel::decode},
      {"KRMutableMultipleValue", KRMutableMultipleValue::decode},
      {"KRMutableSingleValue", KRMutableSingleValue::decode},
      {"KRObjectAddress", KRObjectAddress::decode},
      {"KRObjectEmail", KRObjectEmail::decode},
      {"KRObjectInstantMessage", KRObjectInstantMessage::decode},
      {"KRObjectPersonName", KRObjectPersonName::decode},
      {"KRObjectPhone", KRObjectPhone::decode},
  };
  return classes;
}
