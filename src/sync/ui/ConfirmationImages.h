#pragma once

#include <QPixmap>
#include <QString>

// The two images of the online account check, drawn at any size: "GreenCheck" for an accepted
// account and "RedX" for a refused one.
namespace ConfirmationImages {

inline const QString GreenCheck = QStringLiteral("GreenCheck");
inline const QString RedX = QStringLiteral("RedX");

// A pixmap of the named image (GreenCheck or RedX), `side` device-independent pixels square.
QPixmap image(const QString &name, int side, qreal devicePixelRatio = 1.0);

} // namespace ConfirmationImages
