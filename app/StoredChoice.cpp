#include "app/StoredChoice.h"

#include "app/Unusable.h"
#include "platform/KRPreferences.h"

void keepPreferences() {
  const KRResult<void> result = KRPreferences::standard()->flush();
  if (!result) throw Unusable("the change is not kept: " + result.error().sentence);
}
