#pragma once

#include "platform/KRFile.h"

/// What a test wants to happen at a step of writing: the system's error number, or 0 (`KRFile::setFault`).
int krFaultAt(KRFile::Step step);

/// Flushes what is open to the disk; the system's error number, or 0, also where the file system knows no flushing.
int krFlush(int descriptor);
