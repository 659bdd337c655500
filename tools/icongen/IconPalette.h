#pragma once

#include <QColor>

// The one palette every generated image draws from, so that the tool bar, the tree and the logos read as
// one family: a deep teal brand colour, orange accents, neutral slate greys, and traffic colours for the
// streaming controls.
namespace IconPalette {

inline const QColor brandDeep{0x0f, 0x4c, 0x5c};
inline const QColor brand{0x1a, 0x7f, 0x8e};
inline const QColor brandLight{0x5b, 0xc0, 0xbe};
inline const QColor brandPale{0xc4, 0xe8, 0xe6};

inline const QColor accent{0xf0, 0x8a, 0x24};
inline const QColor accentDark{0xb8, 0x5e, 0x0c};
inline const QColor steel{0x2f, 0x74, 0xc0};
inline const QColor steelDark{0x1d, 0x4f, 0x8a};

inline const QColor ink{0x22, 0x31, 0x3a};
inline const QColor slate{0x4a, 0x5a, 0x66};
inline const QColor mist{0xd5, 0xdd, 0xe2};
inline const QColor cloud{0xf1, 0xf4, 0xf6};
inline const QColor paper{0xff, 0xff, 0xff};

inline const QColor go{0x2f, 0xa8, 0x4f};
inline const QColor goDark{0x1d, 0x74, 0x35};
inline const QColor hold{0xf2, 0xa7, 0x1b};
inline const QColor holdDark{0xa8, 0x6c, 0x00};
inline const QColor halt{0xd9, 0x41, 0x2f};
inline const QColor haltDark{0x98, 0x26, 0x1a};
inline const QColor ice{0x7e, 0xc8, 0xf2};
inline const QColor iceDark{0x2f, 0x86, 0xbd};
inline const QColor idle{0x8c, 0x96, 0x9e};
inline const QColor idleDark{0x5a, 0x65, 0x6d};

inline const QColor red{0xe0, 0x48, 0x3a};
inline const QColor green{0x3d, 0xb0, 0x4f};
inline const QColor blue{0x3a, 0x7f, 0xd5};

// The background logo is tiled over the whole workspace: a calm dark grey-blue with a muted mark.
inline const QColor workspace{0x2b, 0x30, 0x35};
inline const QColor workspaceMark{0x3c, 0x5f, 0x68};
inline const QColor workspaceText{0x5d, 0x68, 0x71};
inline const QColor workspaceSubtext{0x50, 0x5a, 0x62};

} // namespace IconPalette
