// The floor of every program that uses the DLL: it is loaded, and nothing is asked of it.
#include "vykel/vykeldevenum.h"

int main() {
    return vykeldevenum_finalize() < 0 ? 0 : 1; // nothing was initialised
}
