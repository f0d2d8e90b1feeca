#pragma once
// Everything of the parameter trees in one include.

#include <RTE/Parameter/AccessMode.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/ParameterServer.h>
