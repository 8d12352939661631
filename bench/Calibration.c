#include "calib.h"

double CalibrationNanoseconds(void) {
  return calib_run(2000000);
}
