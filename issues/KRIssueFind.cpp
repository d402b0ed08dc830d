#include "issues/KRIssueFind.h"

KRIssueFind::~KRIssueFind() = default;

KRRef<KRIssueContext> KRIssueFind::find([[maybe_unused]] const KRPersonList* persons,
                                        [[maybe_unused]] const KRProgress& progress) {
  return {};
}
