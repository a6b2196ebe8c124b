#ifndef VYKELDEV_ALIASES_PREVIEWTASK_H
#define VYKELDEV_ALIASES_PREVIEWTASK_H

#include "child/ChildTask.h"

namespace vykeldev::aliases {

/// The preview of a transfer: plug-ins run in its process, so it is a child process of this tool. It takes no
/// argument. Reports the legacy "file" and what sort of "link" it is, or an empty text; each "entry", as the
/// JSON object of `aliases` has it, with its fate as "text" for people; then the "layout" of the file,
/// whether the transfer "fails", and how many entries it "sent". Without a file it reports only the first of
/// these. At the end it reports that it is "done", or why it "failed". Its steps are texts for people.
extern const ChildTask previewTask;

} // namespace vykeldev::aliases

#endif
