#include "pavo_core/LoginService.h"

LoginService::~LoginService() = default;
