#pragma once

/// \file
/// The numbers that the workbench processes of one installation exchange. Processes of all versions
/// have to agree on them, so none may change.

/// First parameter of the window message that processes post to one another, and first argument of
/// MAObserver::messageCallback.
enum MACode {
    kMAShow = 1,         ///< take the front; to the observer: this account is in front now
    kMAStepBack = 2,     ///< another account is in front now
    kMAListChanged = 3,  ///< the account list changed
    kMAMarkChanged = 4,  ///< an unread count or mark changed; the second parameter is 1 for more
    kMALoginState = 5,   ///< switch to the login state in the second parameter
    kMAHiddenByUser = 6, ///< the user has hidden the front window
    kMAPopUp = 7,        ///< bring the hidden window back, whoever is in front
    kMAToggle = 8,       ///< show the merged window if it is hidden, or else hide it
};

/// MASelectedAccount::windowState.
enum MAWindowState {
    kMANormal = 1,
    kMAMinimised = 2,
    kMAMaximised = 3,
    kMAHidden = 4,
};

/// MASelectedAccount::mode.
enum MAMode {
    kMASeparate = 0,
    kMAMerged = 1,
};

/// What follows the application's name in the name of the window message.
constexpr const char* kMAMessageSuffix = "_WM";
