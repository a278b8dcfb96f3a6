// A disc service with one fault, chosen when it is compiled.

#include "GlobalMacros.h"
#include <stdexcept>

#if defined(FAULT_ATTACH_THROWS)
LY_EXPORT bool Attach(void*) { throw std::runtime_error("no attach today"); }
#elif defined(FAULT_INITIALIZE_THROWS)
LY_EXPORT void LyDiscInitialize(long long) { throw 42; }
#elif defined(FAULT_ENTRY_THROWS)
LY_EXPORT void* GetDiscManagerDLL(bool) { throw std::runtime_error("no service today"); }
#elif defined(FAULT_NO_ENTRY)
LY_EXPORT void GetSomethingElse() {}
#endif
