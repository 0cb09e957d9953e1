#pragma once

#include <QQuickImageProvider>

// Draws the symbols of the screens: "image://symbol/NAME/COLOUR", the colour as
// six hexadecimal digits, at any size. A name without a symbol gives no image.
class SymbolProvider : public QQuickImageProvider {
 public:
  SymbolProvider() : QQuickImageProvider(Image) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};
