// Table operations of CCorvaneDB: in progress.

#include "store/corvane_db.h"
