// The display contrast of the user's accessibility settings: how far the
// display's contrast is to be enhanced, 0.0 for not at all. Applications
// that draw colours read it to adapt what they show.
//
// The value belongs to the user, not to one program: it is kept in the
// preferences folder ($XDG_CONFIG_HOME, else ~/.config) in the file
// rz/com.apple.universalaccess, a settings text (docs/database-format.md)
// whose entry "contrast" holds the number. docs/platform.md says where
// the value comes from when no file holds one.
#ifndef RZ_MAC_RZCONTRAST_H
#define RZ_MAC_RZCONTRAST_H

#include <Rz/RzCore/RzExport.h>

// The stored value. 0.0 when the entry holds no number. Without an entry,
// 1.0 when the desktop's accessibility settings ask for high contrast, else
// 0.0. Never raises.
RZ_API double GetMacContrastEnhancement();

// Stores `value` (not range-checked). False when it equals the value
// GetMacContrastEnhancement reads now (nothing is written then) and when it
// cannot be stored; true once the file holds it. Other entries of the file
// are kept. The file is replaced whole, so that a crash leaves the old or
// the new value, never a damaged file. Never raises.
RZ_API bool SetMacContrastEnhancement(double value);

#endif
