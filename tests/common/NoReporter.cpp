/// In place of the error reporter, for tests of the layers below it.
extern "C" const void* const kpxLoadOrder;
extern "C" const void* const kpxLoadOrder = nullptr;
