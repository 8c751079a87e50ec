#include "platform/uikit/values/UIFont.h"

UIFont UIFont::systemFontOfSize(double pointSize, int weight) {
  return {"Noto Sans", pointSize, weight, false};
}
