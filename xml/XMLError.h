#pragma once

#include <exception>
#include <string>

#include "platform/Export.h"

// Why a step over a tree, or the reading of text, failed. A plain value: accessors carry it, only XML::parse throws it.
class YMR_API XMLError : public std::exception {
 public:
  enum class Kind {
    accessError,  // a step of an accessor; description() is its message
    parseError,   // text that is not UTF-8; without description
  };

  static XMLError accessError(std::string description);
  static XMLError parseError();
  ~XMLError() override;

  Kind kind() const { return kind_; }
  const std::string& description() const { return description_; }
  // The text form: an access error's description, else "parseError".
  const char* what() const noexcept override;

  friend bool operator==(const XMLError& left, const XMLError& right) {
    return left.kind_ == right.kind_ && left.description_ == right.description_;
  }

 private:
  XMLError(Kind kind, std::string description);
  Kind kind_;
  std::string description_;
};
