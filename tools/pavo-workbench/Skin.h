#pragma once

#include <QString>

namespace Skin {

/// Of the skin with this index, in the user's language; of the first one when there is none.
QString name(int skin);

} // namespace Skin
