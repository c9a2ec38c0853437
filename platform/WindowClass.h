#pragma once

namespace pavo {

// No window class has a longer name. A longer one must not reach the system, whoever has made it
// up: there are systems that take it to too small a buffer, wherever they take a class.
constexpr int kLongestWindowClass = 255;

} // namespace pavo
