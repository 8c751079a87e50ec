#include "platform/avfoundation/engine/MediaErrors.h"

#include <cerrno>
#include <cmath>
#include <utility>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/foundation/NSString.h"

namespace {

// What a person calls the media: the file's name, or the server.
std::string nameOf(const NSURL& url) {
  if (!url.isFileURL()) return url.host().empty() ? url.absoluteString() : url.host();
  const auto slash = url.path().find_last_of('/');
  return slash == std::string::npos ? url.path() : url.path().substr(slash + 1);
}

NSError urlError(int code, std::string message) {
  return {NSURLErrorDomain, code, std::move(message)};
}
NSError mediaError(int code, std::string message) {
  return {AVFoundationErrorDomain, code, std::move(message)};
}

NSError statusError(unsigned status, const NSURL& url) {
  const std::string server = "The server " + nameOf(url);
  const std::string answer = " (HTTP " + std::to_string(status) + ").";
  if (status < 400) {
    return urlError(NSURLErrorHTTPTooManyRedirects, server + " redirects without an end" + answer);
  }
  switch (status) {
    case 401:
    case 403:
    case 407:
      return urlError(NSURLErrorNoPermissionsToReadFile, server + " does not allow this media to be played" + answer);
    case 404:
    case 410:
      return urlError(NSURLErrorFileDoesNotExist, server + " does not have this media" + answer);
    default:
      return urlError(NSURLErrorBadServerResponse, server + " did not deliver the media" + answer);
  }
}

NSError resourceError(int code, const NSURL& url, const std::string& detail) {
  switch (code) {
    case GST_RESOURCE_ERROR_NOT_FOUND:
      if (url.isFileURL()) return urlError(NSURLErrorFileDoesNotExist, "The file " + nameOf(url) + " does not exist.");
      return urlError(NSURLErrorResourceUnavailable, "The server " + nameOf(url) + " does not have this media.");
    case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
      return urlError(NSURLErrorNoPermissionsToReadFile, "Reading " + nameOf(url) + " is not allowed.");
    case GST_RESOURCE_ERROR_OPEN_READ:
    case GST_RESOURCE_ERROR_OPEN_READ_WRITE:
      if (url.isFileURL()) {
        return urlError(NSURLErrorNoPermissionsToReadFile, "The file " + nameOf(url) + " can't be opened.");
      }
      return urlError(NSURLErrorCannotConnectToHost, "The server " + nameOf(url) + " can't be reached.");
    case GST_RESOURCE_ERROR_READ:
    case GST_RESOURCE_ERROR_SEEK:
      return readingError(url);
    default:
      return mediaError(AVErrorUnknown, nameOf(url) + " can't be played: " + detail);
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
      return mediaError(AVErrorDecodeFailed, nameOf(url) + " is damaged and can't be decoded.");
    case GST_STREAM_ERROR_DECRYPT:
    case GST_STREAM_ERROR_DECRYPT_NOKEY:
      return mediaError(AVErrorDecodeFailed, nameOf(url) + " is encrypted.");
    case GST_STREAM_ERROR_DEMUX:
    case GST_STREAM_ERROR_FORMAT:
      return damagedMediaError(url);
    default:
      return mediaError(AVErrorUnknown, nameOf(url) + " can't be played: " + detail);
  }
}

// What became of a connection after the server's last answer.
NSError connectionError(const NSURL& url, unsigned status) {
  if (status == 0) {
    return urlError(NSURLErrorCannotConnectToHost, "The server " + nameOf(url) + " can't be reached.");
  }
  return urlError(NSURLErrorNetworkConnectionLost, "The connection to the server " + nameOf(url) + " was lost.");
}

bool isFromHTTPSource(GstMessage* message) {
  return GST_IS_ELEMENT(GST_MESSAGE_SRC(message)) &&
         factoryName(GST_ELEMENT_CAST(GST_MESSAGE_SRC(message))) == "souphttpsrc";
}

}  // namespace

NSError mediaErrorFromMessage(GstMessage* message, const NSURL& url, const MediaErrorContext& context) {
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
  // The source has no words of its own for a connection that failed: its stream just stops.
  if (isFromHTTPSource(message) && error->domain == GST_STREAM_ERROR) {
    return connectionError(url, context.httpStatus);
  }
  if (error->domain == GST_RESOURCE_ERROR) return resourceError(error->code, url, error->message);
  if (error->domain == GST_STREAM_ERROR) return streamError(error->code, url, error->message);
  if (error->domain == GST_CORE_ERROR && error->code == GST_CORE_ERROR_MISSING_PLUGIN) {
    return missingDecoderError(url, context.missingCodec);
  }
  return mediaError(AVErrorUnknown, nameOf(url) + " can't be played: " + error->message);
}

NSError readingError(const NSURL& url) {
  return urlError(url.isFileURL() ? NSURLErrorResourceUnavailable : NSURLErrorNetworkConnectionLost,
                  "Reading " + nameOf(url) + " failed.");
}

NSError unsupportedSchemeError(const NSURL& url) {
  return urlError(NSURLErrorUnsupportedURL, "Media at " + url.scheme() + ": addresses can't be played here.");
}

NSError unrecognizedFormatError(const NSURL& url, const std::string& typeName) {
  const std::string found = typeName.empty() ? "" : " (" + typeName + ")";
  return mediaError(AVErrorFileFormatNotRecognized,
                    nameOf(url) + " is not of a format that can be played" + found + ".");
}

NSError localPlaylistError(const NSURL& url) {
  return mediaError(AVErrorFileFormatNotRecognized,
                    nameOf(url) + " is a playlist, and those are played from web servers only.");
}

NSError damagedMediaError(const NSURL& url) {
  return mediaError(AVErrorFileFailedToParse, nameOf(url) + " is damaged or incomplete.");
}

NSError missingDecoderError(const NSURL& url, const std::string& codec) {
  const std::string what = codec.empty() ? "a codec" : codec;
  return mediaError(AVErrorDecoderNotFound, nameOf(url) + " needs " + what + ", which can't be decoded here.");
}

NSError silenceError(const NSURL& url, double seconds) {
  const double rounded = std::round(seconds * 10) / 10;
  const std::string length = stringWithDouble(rounded, rounded == std::floor(rounded) ? 0 : 1);
  return mediaError(AVErrorNoDataReceived, nameOf(url) + " sent no usable data for " + length + " seconds.");
}

NSError overtimeError(const NSURL& url) {
  return mediaError(AVErrorNoDataReceived, nameOf(url) + " takes much longer to play than it is.");
}

NSError fileError(const NSURL& url, int reason) {
  return resourceError(
      reason == ENOENT || reason == ENOTDIR ? GST_RESOURCE_ERROR_NOT_FOUND : GST_RESOURCE_ERROR_OPEN_READ, url, "");
}

NSError crashError(const NSURL& url) {
  return mediaError(AVErrorDecodeFailed, nameOf(url) + " can't be played: each attempt at decoding it breaks off.");
}

NSError missingLibraryError(const std::string& what) {
  return mediaError(AVErrorUnknown, "This machine can't play media: " + what + " is missing.");
}
