#ifndef VYKELDEV_CHILD_PREVIEWTASK_H
#define VYKELDEV_CHILD_PREVIEWTASK_H

#include "child/ChildTask.h"

namespace vykeldev {

/// The preview of a transfer: plug-ins run in its process, so it is a child process of this tool. It takes no
/// argument. Reports members of the "document" that `aliases` prints, and each "entry" of it. Its steps are
/// texts for people.
extern const ChildTask previewTask;

} // namespace vykeldev

#endif
