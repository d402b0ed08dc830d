#pragma once

#include "platform/KRBuffer.h"
#include "platform/KRResult.h"
#include "platform/KRText.h"

/// The whole content of a regular file that nobody has to vouch for, such as one that is kept in the user's folders and
/// may have been tampered with: opening a pipe or a device would wait for its writer, and reading one might never end.
/// Links are followed. Thread-safe.
///
/// As `KRFile::read`, but `Failed` for what is no regular file, and `TooLarge` for one that is larger than the memory
/// of this machine, before anything of it is read.
KRResult<KRBuffer> krReadRegularFile(KRText path);
