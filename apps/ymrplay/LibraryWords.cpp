#include "apps/ymrplay/LibraryWords.h"

#include <glib.h>

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "VAST/SKLogger.h"
#include "apps/shared/CommandLine.h"
#include "apps/shared/Printable.h"

namespace {

// Qt says why in a warning before it aborts.
std::string& firstComplaintOfDisplay() {
  static std::string complaint;
  return complaint;
}

void logQt(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  auto& complaint = firstComplaintOfDisplay();
  if (complaint.empty() && context.category && std::string_view(context.category).rfind("qt.qpa", 0) == 0) {
    complaint = message.toStdString();
  }
  if (type == QtFatalMsg && !QGuiApplication::primaryScreen()) {
    if (complaint.empty()) complaint = message.section('\n', 0, 0).toStdString();
    std::fprintf(stderr, "ymrplay: no usable display: %s\n", printable(complaint).c_str());
    std::_Exit(wrongUsage);
  }
  SKLogger::warning("Qt", message.toStdString());
}

// The framework's own words come this way too.
GLogWriterOutput logGLib(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
  const auto valueOf = [&](std::string_view key) -> std::string {
    for (const GLogField* field = fields; field != fields + count; ++field) {
      if (field->key != key || !field->value) continue;
      const auto* text = static_cast<const char*>(field->value);
      return field->length < 0 ? std::string(text) : std::string(text, std::size_t(field->length));
    }
    return "";
  };
  const bool isOwn = valueOf("GLIB_DOMAIN") == "ymr";
  const bool isError = isOwn && (level & G_LOG_LEVEL_CRITICAL) != 0;
  (isError ? SKLogger::error : SKLogger::warning)(isOwn ? "ymr" : "GLib", valueOf("MESSAGE"));
  return G_LOG_WRITER_HANDLED;
}

}  // namespace

void logWordsOfLibraries() {
  qInstallMessageHandler(logQt);
  g_log_set_writer_func(logGLib, nullptr, nullptr);
}
