// How the process draws.
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <filesystem>
#include <string_view>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIWindow.h"

namespace {

// Looking at device files first keeps a machine without a GPU from loading a GL library, whose software renderer alone
// takes a tenth of a second and a hundred megabytes.
bool hasGraphicsDevice() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/dri", error)) {
    if (entry.path().filename().string().starts_with("render")) return true;
  }
  for (const char* device : {"/dev/nvidia0", "/dev/nvhost-gpu", "/dev/mali0", "/dev/galcore", "/dev/kgsl-3d0",
                             "/dev/pvrsrvkm", "/dev/vchiq"}) {
    if (std::filesystem::exists(device, error)) return true;
  }
  return false;
}

bool isSoftwareRenderer(std::string_view name) {
  for (const char* software : {"llvmpipe", "softpipe", "swrast", "SwiftShader", "Software Rasterizer", "lavapipe"}) {
    if (name.find(software) != name.npos) return true;
  }
  return name.empty();
}

// Whether GL is there and done by hardware.
bool drawsOnHardware() {
  QOpenGLContext context;
  if (!context.create()) return false;
  QOffscreenSurface surface;
  surface.setFormat(context.format());
  surface.create();
  if (!context.makeCurrent(&surface)) return false;
  const auto* renderer = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
  const bool hardware = renderer && !isSoftwareRenderer(renderer);
  context.doneCurrent();
  return hardware;
}

bool isGpuUsable() {
  for (const char* platform : {"offscreen", "minimal", "linuxfb", "vnc"}) {
    if (QGuiApplication::platformName() == platform) return false;
  }
  return !qEnvironmentVariableIntValue("LIBGL_ALWAYS_SOFTWARE") && hasGraphicsDevice() && drawsOnHardware();
}

UIGraphics present() {
  const QString backend = QQuickWindow::sceneGraphBackend();
  const bool isSoftware =
      backend == "software" || qgetenv("QT_QUICK_BACKEND") == "software" || qgetenv("QMLSCENE_DEVICE") == "software";
  return isSoftware ? UIGraphics::software : UIGraphics::gpu;
}

bool isDecided() {
  if (!QQuickWindow::sceneGraphBackend().isEmpty()) return true;
  for (const char* variable : {"QT_QUICK_BACKEND", "QMLSCENE_DEVICE", "QSG_RHI_BACKEND"}) {
    if (qEnvironmentVariableIsSet(variable)) return true;
  }
  for (const QWindow* window : QGuiApplication::allWindows()) {
    if (qobject_cast<const QQuickWindow*>(window)) return true;
  }
  return false;
}

}  // namespace

UIGraphics UIChooseGraphics(UIGraphics wish) {
  YMR_ASSERT_MAIN_THREAD();
  static bool chosen = false;
  if (chosen || isDecided()) return present();
  chosen = true;
  if (wish == UIGraphics::automatic) wish = isGpuUsable() ? UIGraphics::gpu : UIGraphics::software;
  if (wish == UIGraphics::software) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  return wish;
}
