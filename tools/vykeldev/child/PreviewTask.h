#ifndef VYKELDEV_CHILD_PREVIEWTASK_H
#define VYKELDEV_CHILD_PREVIEWTASK_H

#include "child/ChildTask.h"

namespace vykeldev {

/// The preview of a transfer: plug-ins run in its process, so it is a child process of this tool. It takes no
/// argument. Reports the legacy "file" and what sort of "link" it is, or an empty text; then each "entry", as
/// the JSON object of `aliases` has it, with its fate as "text" for people. At the end it reports the
/// "layout" of the file (null: there is no file), whether the transfer "fails", and how many entries it
/// "sent"; or why it "failed". Its steps are texts for people.
extern const ChildTask previewTask;

} // namespace vykeldev

#endif
