extern "C" int NotGetComponent() { return 0; }
