#ifndef VYKELDEV_SYSTEM_STATUSTEXT_H
#define VYKELDEV_SYSTEM_STATUSTEXT_H

#include "vykel/StatusBlock.h"
#include <string>

/// What an error says in a status block of full size beside its code. Texts are UTF-8, printable, and empty
/// when the block does not say it.
namespace vykeldev {

/// File and line, as in "left.devices:3". In a plug-in's block they may be those of its own data.
std::string placeIn(const vykel::StatusBlock& status);

/// The same for the end of a sentence, as in "; the plug-in names left.devices:3".
std::string originText(const vykel::StatusBlock& status);

} // namespace vykeldev

#endif
