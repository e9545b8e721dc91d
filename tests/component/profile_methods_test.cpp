#include "component/component.h"
