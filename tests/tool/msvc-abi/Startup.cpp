// Where the system starts a program: in place of the compiler's own start-up code.
#include <cstdlib>

int main();

extern "C" void mainCRTStartup() {
    std::exit(main());
}
