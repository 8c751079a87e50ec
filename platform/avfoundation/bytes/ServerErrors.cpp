#include "platform/avfoundation/bytes/ServerErrors.h"

namespace {

NSError unfetched(int code, const NSURL& url, const std::string& reason) {
  return {NSURLErrorDomain, code, nameOfMedia(url) + " can't be fetched: " + reason + "."};
}

std::string withoutFullStop(std::string sentence) {
  if (sentence.ends_with('.')) sentence.pop_back();
  return sentence;
}

}  // namespace

std::string nameOfMedia(const NSURL& url) {
  return nameForMessage(url);
}

NSError statusError(long status, const NSURL& url) {
  const auto answered = [&](int code, const char* reason) {
    return unfetched(code, url, std::string(reason) + " (HTTP " + std::to_string(status) + ")");
  };
  if (status >= 300 && status < 400) {
    return answered(NSURLErrorRedirectToNonExistentLocation, "its server says that it is elsewhere, and not where");
  }
  switch (status) {
    case 204:
    case 205:
      return answered(NSURLErrorZeroByteResource, "its server sends nothing");
    case 401:
    case 403:
    case 407:
      return answered(NSURLErrorNoPermissionsToReadFile, "its server does not allow it");
    case 404:
    case 410:
      return answered(NSURLErrorFileDoesNotExist, "its server does not have it");
    case 408:
    case 429:
    case 503:
      return answered(NSURLErrorResourceUnavailable, "its server is too busy");
    default:
      return answered(NSURLErrorBadServerResponse,
                      status >= 500 ? "its server is out of order" : "its server did not deliver it");
  }
}

NSError unansweredError(const NSError& error, const NSURL& url) {
  switch (error.code) {
    case NSURLErrorTimedOut:
      return unfetched(error.code, url, "its server can't be reached in time");
    case NSURLErrorCannotFindHost:
      return unfetched(error.code, url, "there is no address for the name of its server");
    case NSURLErrorCannotConnectToHost:
      return unfetched(error.code, url, "its server can't be reached");
    case NSURLErrorNetworkConnectionLost:
      return lostConnectionError(url);
    case NSURLErrorHTTPTooManyRedirects:
      return unfetched(error.code, url, "its server redirects without an end");
    case NSURLErrorSecureConnectionFailed:
      return unfetched(error.code, url,
                       "there is no secure connection to its server: " + withoutFullStop(error.message));
    case NSURLErrorServerCertificateUntrusted:
    case NSURLErrorUnsupportedURL:
      return {NSURLErrorDomain, error.code,
              nameOfMedia(url) + " can't be fetched. " + withoutFullStop(error.message) + "."};
    default:
      return unfetched(error.code, url, withoutFullStop(error.message));
  }
}

NSError lostConnectionError(const NSURL& url) {
  return unfetched(NSURLErrorNetworkConnectionLost, url, "the connection to its server was lost");
}

NSError senselessAnswerError(const NSURL& url, const std::string& what) {
  return unfetched(NSURLErrorBadServerResponse, url, "its server did not answer what was asked, but with " + what);
}

NSError changedMediaError(const NSURL& url) {
  return unfetched(NSURLErrorBadServerResponse, url, "it is not what it was when it was opened");
}

NSError emptyMediaError(const NSURL& url) {
  return {NSURLErrorDomain, NSURLErrorZeroByteResource, nameOfMedia(url) + " is empty."};
}

NSError missingPartError(const NSURL& media, const std::string& missing, const NSError& why) {
  const bool isKey = why.domain == AVFoundationErrorDomain && why.code == AVErrorContentIsNotAuthorized;
  return {AVFoundationErrorDomain, isKey ? AVErrorContentIsNotAuthorized : AVErrorContentIsUnavailable,
          nameOfMedia(media) + " can't be played: " + missing + ". " + why.message};
}
