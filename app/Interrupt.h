#pragma once

#include <atomic>

/// What happens when the user presses Ctrl-C: one line on standard error, and the program ends at once with 130,
/// whatever it is doing. Files are never half written, so nothing needs to be put in order first.
namespace Interrupt {

/// Whether a progress bar stands on the terminal and has to be taken away first.
extern std::atomic<bool> barIsDrawn;

/// Sets the handler, also when the program was started with interrupts ignored, as shells do for a script's background
/// work: who sends one means it. A reader of standard output that goes away ends the program quietly.
void install();

}  // namespace Interrupt
