// Compiled against one floor's view with a header of a higher floor: the
// build must stop at this include.
#include QUARRIX_PROBE_HEADER
