#pragma once

#include "contacts/model/IKRPerson.h"
#include "platform/KRString.h"

class KRIssueObject;

/// A text by which a finding is known again in another scan, in another process, and after the contacts came back under
/// other identifiers: the SHA-256 digest of its issue's name, of its `info`, and of what its contacts are and hold as
/// far as that concerns the issue, whatever their order. 64 hexadecimal characters; the same with every version of the
/// library that says 1 in `KRIgnoredFindings`' files. Nothing for a finding in no context.
///
/// What concerns an issue: always the name, and whether it is a company's card. For contacts of the same name their
/// phones, e-mails and company too, which speak for or against their being one; for exact duplicates everything; for a
/// field the field itself. So a decision about two namesakes is asked for again when one of them gets another phone,
/// and not when one gets a note. Labels, the order of entries, empty values and pictures do not count, but for exact
/// duplicates, where pictures do.
KRString krFindingKey(const KRIssueObject& finding);

/// The SHA-256 digest of everything that the person holds under the standard properties, labels and order included, by
/// which it is seen whether it was changed. Makes and keeps the person's stored values.
KRString krPersonDigest(const IKRPerson& person);
