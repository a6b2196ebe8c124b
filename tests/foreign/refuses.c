// A plug-in that refuses to work.
#include "vykel/vykel_c.h"

int32_t vykel_initializePlugin(void) {
    return VYKEL_GENERAL_FAULT;
}
int32_t vykel_getPluginInterface(int32_t version, vykel_DeviceList** list) {
    (void)version, (void)list;
    return VYKEL_GENERAL_FAULT;
}
int32_t vykel_finalizePlugin(void) {
    return 0;
}
