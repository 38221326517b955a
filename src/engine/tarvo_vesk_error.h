// Errors of the check engine.
#pragma once

#include <exception>

#include "VeskTarvoM5/VeskTarvoM5.h"

class ETarvoVesk : public std::exception {
  public:
    explicit ETarvoVesk(ErrorVeskTarvo error) : code(error) {}
    ErrorVeskTarvo getCode() const { return static_cast<ErrorVeskTarvo>(code); }

  private:
    int code;
};
