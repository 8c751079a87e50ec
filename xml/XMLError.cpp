#include "xml/XMLError.h"

#include <utility>

XMLError::XMLError(Kind kind, std::string description) : kind_(kind), description_(std::move(description)) {}

XMLError::~XMLError() = default;

XMLError XMLError::accessError(std::string description) {
  return {Kind::accessError, std::move(description)};
}

XMLError XMLError::parseError() {
  return {Kind::parseError, {}};
}

const char* XMLError::what() const noexcept {
  return kind_ == Kind::parseError ? "parseError" : description_.c_str();
}
