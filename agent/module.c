/*
 * libsnmpdAPI is assembled from the core and agent archives; this unit only
 * gives the shared object its identity string.
 */
const char libsnmpdAPI_version[] = "libsnmpdAPI 0.1";  /* kept inside: see exports.map */
