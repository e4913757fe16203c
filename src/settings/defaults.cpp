// The settings a method starts from.
#include <algorithm>

#include "LumenforgeMetaLib.h"
#include "settings/schema.h"

int def_param(int method, float* params) {
  std::fill_n(params, kSettingsParamsSlots, 0.0F);
  if (const lumenforge::Method* known = lumenforge::methodOf(method)) {
    for (const lumenforge::Element& element : known->elements) {
      params[element.slot] = element.defaultValue;
    }
  }
  return 0;
}
