#include "rfm_HandleConverter.h"

#include "rfm_IntConverter.h"

#include <cstring>

rfm_Handle rfm_HandleConverter::Internalize(omi_Swapper swapper, char const* source) {
  return rfm_Handle(rfm_IntConverter::Internalize(swapper, source));
}

void rfm_HandleConverter::Externalize(omi_Swapper swapper, char* target, rfm_Handle value) {
  rfm_IntConverter::Externalize(swapper, target, value.Value());
  std::memset(target + rfm_IntConverter::ExternalSize(), 0, ExternalSize() - rfm_IntConverter::ExternalSize());
}
