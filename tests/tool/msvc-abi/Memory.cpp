// What the plug-in needs of a C++ runtime: memory for the one list that the client makes, and what no call
// reaches.

using Size = decltype(sizeof(0));

void* operator new(Size) {
    alignas(16) static char memory[64];
    return memory;
}
void operator delete(void*) noexcept {}
void operator delete(void*, Size) noexcept {}

extern "C" int _purecall() {
    return 0;
}
