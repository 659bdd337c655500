#pragma once

class QPainter;

// The application icon and the company logos.
namespace LogoImages {

// 32 x 32 window icon: stacked depth planes with a "Z" on the front one.
void drawApplicationIcon(QPainter &painter);

// 700 x 372 workspace background: a calm, muted logo on an opaque dark grey-blue that tiles seamlessly.
void drawWorkspaceLogo(QPainter &painter);

// 170 x 45 logo for the About dialog, on a transparent background.
void drawSmallLogo(QPainter &painter);

} // namespace LogoImages
