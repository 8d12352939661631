#pragma once
// What nearly every source needs: words, memory, texts, exceptions, messages, lists, locks, objects.
#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MList.h"
#include "core/MLock.h"
#include "core/MMemory.h"
#include "core/MObject.h"
#include "core/MString.h"
#include "core/MTranslate.h"
#include "core/MTypes.h"
