// A library without a module.

extern "C" __attribute__((visibility("default"))) int PlainFunction() {
  return 1;
}
