// A library that holds no component.
extern "C" int Unrelated();

extern "C" __attribute__((visibility("default"))) int Unrelated() { return 0; }
