// The settings a method starts from.
#include "LumenforgeMetaLib.h"
#include "settings/schema.h"

int def_param(int method, float* params) {
  lumenforge::setDefaults(lumenforge::methodOf(method), params);
  return 0;
}
