#include "platform/avfoundation/engine/MediaErrors.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <system_error>
#include <utility>

#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/foundation/NSString.h"

namespace {

NSError urlError(int code, std::string message) {
  return {NSURLErrorDomain, code, std::move(message)};
}
NSError mediaError(int code, std::string message) {
  return {AVFoundationErrorDomain, code, std::move(message)};
}

NSError resourceError(int code, const NSURL& url, const std::string& detail) {
  switch (code) {
    case GST_RESOURCE_ERROR_NOT_FOUND:
      return url.isFileURL() ? fileError(url, ENOENT) : statusError(404, url);
    case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
      return url.isFileURL() ? fileError(url, EACCES) : statusError(403, url);
    case GST_RESOURCE_ERROR_OPEN_READ:
    case GST_RESOURCE_ERROR_OPEN_READ_WRITE:
      if (url.isFileURL())
        return urlError(NSURLErrorCannotOpenFile, "The file " + nameOfMedia(url) + " can't be opened.");
      return unansweredError({NSURLErrorDomain, NSURLErrorCannotConnectToHost, ""}, url);
    case GST_RESOURCE_ERROR_READ:
    case GST_RESOURCE_ERROR_SEEK:
      return readingError(url);
    default:
      return mediaError(AVErrorUnknown, nameOfMedia(url) + " can't be played: " + detail);
  }
}

NSError streamError(int code, const NSURL& url, const std::string& detail) {
  switch (code) {
    case GST_STREAM_ERROR_TYPE_NOT_FOUND:
    case GST_STREAM_ERROR_WRONG_TYPE:
      return unrecognizedFormatError(url, "");
    case GST_STREAM_ERROR_CODEC_NOT_FOUND:
      return missingDecoderError(url, "");
    case GST_STREAM_ERROR_DECODE:
      return mediaError(AVErrorDecodeFailed, nameOfMedia(url) + " is damaged and can't be decoded.");
    case GST_STREAM_ERROR_DECRYPT:
    case GST_STREAM_ERROR_DECRYPT_NOKEY:
      return mediaError(AVErrorDecodeFailed, nameOfMedia(url) + " is encrypted.");
    case GST_STREAM_ERROR_DEMUX:
    case GST_STREAM_ERROR_FORMAT:
      return damagedMediaError(url);
    default:
      return mediaError(AVErrorUnknown, nameOfMedia(url) + " can't be played: " + detail);
  }
}

}  // namespace

NSError mediaErrorFromMessage(GstMessage* message, const NSURL& url, const std::string& missingCodec) {
  GError* parsed = nullptr;
  gchar* debug = nullptr;
  gst_message_parse_error(message, &parsed, &debug);
  const GErrorRef error(parsed);
  const GTextRef explanation(debug);
  const GstStructure* details = nullptr;
  gst_message_parse_error_details(message, &details);

  guint status = 0;
  if (details && gst_structure_get_uint(details, "http-status-code", &status) && status >= 300) {
    return statusError(status, url);
  }
  if (error->domain == GST_RESOURCE_ERROR) return resourceError(error->code, url, error->message);
  if (error->domain == GST_STREAM_ERROR) return streamError(error->code, url, error->message);
  if (error->domain == GST_CORE_ERROR && error->code == GST_CORE_ERROR_MISSING_PLUGIN) {
    return missingDecoderError(url, missingCodec);
  }
  return mediaError(AVErrorUnknown, nameOfMedia(url) + " can't be played: " + error->message);
}

NSError readingError(const NSURL& url) {
  return urlError(url.isFileURL() ? NSURLErrorResourceUnavailable : NSURLErrorNetworkConnectionLost,
                  nameOfMedia(url) + " can't be read any further.");
}

NSError unsupportedSchemeError(const NSURL& url) {
  return urlError(NSURLErrorUnsupportedURL,
                  nameOfMedia(url) + " can't be played: " + url.scheme() + ": addresses are not opened here.");
}

NSError unrecognizedFormatError(const NSURL& url, const std::string& typeName) {
  if (typeName == "text/html") {
    return mediaError(AVErrorFileFormatNotRecognized, nameOfMedia(url) + " is a web page and no film (text/html).");
  }
  const std::string found = typeName.empty() ? "" : " (" + typeName + ")";
  return mediaError(AVErrorFileFormatNotRecognized,
                    nameOfMedia(url) + " is not of a format that can be played" + found + ".");
}

NSError localPlaylistError(const NSURL& url) {
  return mediaError(AVErrorFileFormatNotRecognized,
                    nameOfMedia(url) + " is a playlist, and those are played from web servers only.");
}

NSError damagedMediaError(const NSURL& url) {
  return mediaError(AVErrorFileFailedToParse, nameOfMedia(url) + " is damaged or incomplete.");
}

NSError missingDecoderError(const NSURL& url, const std::string& codec) {
  const std::string what = codec.empty() ? "a codec" : codec;
  return mediaError(AVErrorDecoderNotFound, nameOfMedia(url) + " needs " + what + ", which can't be decoded here.");
}

NSError silenceError(const NSURL& url, double seconds) {
  const double rounded = std::round(seconds * 10) / 10;
  const std::string length = stringWithDouble(rounded, rounded == std::floor(rounded) ? 0 : 1);
  return mediaError(AVErrorNoDataReceived, nameOfMedia(url) + " sent no usable data for " + length + " seconds.");
}

NSError overtimeError(const NSURL& url) {
  return mediaError(AVErrorNoDataReceived, nameOfMedia(url) + " takes much longer to play than it is.");
}

NSError fileError(const NSURL& url, int reason) {
  const std::string file = "The file " + nameOfMedia(url);
  switch (reason) {
    case ENOENT:
    case ENOTDIR:
      return urlError(NSURLErrorFileDoesNotExist, file + " does not exist.");
    case EISDIR:
      return urlError(NSURLErrorFileIsDirectory, nameOfMedia(url) + " is a folder and no file.");
    case EACCES:
    case EPERM:
      return urlError(NSURLErrorNoPermissionsToReadFile, file + " may not be read.");
    default:
      return urlError(NSURLErrorCannotOpenFile,
                      file + " can't be opened: " + std::generic_category().message(reason) + ".");
  }
}

std::optional<NSError> fileFault(const NSURL& url, std::optional<int> descriptor) {
  struct stat status {};
  if ((descriptor ? ::fstat(*descriptor, &status) : ::stat(url.path().c_str(), &status)) != 0) {
    return fileError(url, errno);
  }
  if (S_ISDIR(status.st_mode)) return fileError(url, EISDIR);
  if (S_ISREG(status.st_mode) && status.st_size == 0) return emptyMediaError(url);
  if (descriptor && ::access(("/proc/self/fd/" + std::to_string(*descriptor)).c_str(), F_OK) != 0) {
    return mediaError(AVErrorUnknown, nameOfMedia(url) + " can't be played: /proc is missing on this machine.");
  }
  return std::nullopt;
}

NSError crashError(const NSURL& url) {
  return mediaError(AVErrorDecodeFailed,
                    nameOfMedia(url) + " can't be played: each attempt at decoding it breaks off.");
}

NSError missingLibraryError(const std::string& what) {
  return mediaError(AVErrorUnknown, "This machine can't play media: " + what + " is missing.");
}
