#include "Tidewell/Screens/SymbolProvider.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

namespace {

constexpr int naturalSize = 24;

QByteArray drawing(const QString& name, const QString& colour) {
  QFile file(QStringLiteral(":/qt/qml/Tidewell/Screens/Symbols/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return file.readAll().replace("currentColor", "#" + colour.toLatin1());
}

}  // namespace

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  QByteArray svg = drawing(id.section('/', 0, 0), id.section('/', 1, 1));
  QBuffer buffer(&svg);
  QImageReader reader(&buffer, "svg");
  reader.setScaledSize(requestedSize.isEmpty() ? QSize(naturalSize, naturalSize) : requestedSize);
  QImage image = reader.read();
  if (size != nullptr) *size = image.size();
  return image;
}
