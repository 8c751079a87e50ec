#pragma once

#include <exception>
#include <string>
#include <utility>

#include "platform/Export.h"

// A programming error reported as an exception. description() is "name: reason".
class YMR_API NSException : public std::exception {
 public:
  NSException(std::string name, std::string reason);
  ~NSException() override;

  const std::string& name() const { return name_; }
  const std::string& reason() const { return reason_; }
  const std::string& description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::string name_;
  std::string reason_;
  std::string description_;
};

// An index or an observer that is not there.
class YMR_API NSRangeException : public NSException {
 public:
  explicit NSRangeException(std::string reason) : NSException("NSRangeException", std::move(reason)) {}
  ~NSRangeException() override;
};

// An operation that the receiver's class does not support.
class YMR_API NSInternalInconsistencyException : public NSException {
 public:
  explicit NSInternalInconsistencyException(std::string reason)
      : NSException("NSInternalInconsistencyException", std::move(reason)) {}
  ~NSInternalInconsistencyException() override;
};
