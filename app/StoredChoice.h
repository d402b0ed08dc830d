#pragma once

/// Makes sure that what was changed is kept: writes the preferences to the disk. Throws `Unusable` when the disk does
/// not take them.
void keepPreferences();
