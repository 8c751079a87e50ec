#include "platform/foundation/NSException.h"

#include <utility>

NSException::NSException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)), description_(name_ + ": " + reason_) {}

NSException::~NSException() = default;
NSRangeException::~NSRangeException() = default;
NSInternalInconsistencyException::~NSInternalInconsistencyException() = default;
