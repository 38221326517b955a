// A library with nothing in it: what loading costs at the least.
extern "C" int EmptyLibrary() {
    return 0;
}
