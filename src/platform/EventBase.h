#pragma once
#include "oraclecloud/EventBase.h"
