#pragma once

#include "platform/KRBuffer.h"
#include "platform/KRFile.h"
#include "platform/KRResult.h"

/// What a test wants to happen at a step of writing: the system's error number, or 0 (`KRFile::setFault`).
int krFaultAt(KRFile::Step step);

/// Flushes what is open to the disk; the system's error number, or 0, also where the file system knows no flushing.
int krFlush(int descriptor);

/// Reads what is open to its end; `name` is what an error calls it.
KRResult<KRBuffer> krReadAll(int descriptor, KRText name);
