/*
 * Small preprocessor tools used to expand the catalogues (.def files).
 */
#ifndef SNMPAPI_PP_H
#define SNMPAPI_PP_H

#define SA_CAT(a, b) SA_CAT_(a, b)
#define SA_CAT_(a, b) a##b
/* Second and third spellings, for use inside expansions of the first. */
#define SA_CAT2(a, b) SA_CAT2_(a, b)
#define SA_CAT2_(a, b) a##b
#define SA_CAT3(a, b) SA_CAT3_(a, b)
#define SA_CAT3_(a, b) a##b

/* Number of arguments, 1 .. 8. */
#define SA_NARGS(...) SA_NARGS_(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define SA_NARGS_(a1, a2, a3, a4, a5, a6, a7, a8, N, ...) N

/* SA_FOR_EACH_I(M, a, b, ...) -> M(0, a), M(1, b), ...  (comma separated) */
#define SA_FOR_EACH_I(M, ...) SA_CAT2(SA_FE_, SA_NARGS(__VA_ARGS__))(M, __VA_ARGS__)
#define SA_FE_1(M, a) M(0, a)
#define SA_FE_2(M, a, b) M(0, a), M(1, b)
#define SA_FE_3(M, a, b, c) M(0, a), M(1, b), M(2, c)
#define SA_FE_4(M, a, b, c, d) M(0, a), M(1, b), M(2, c), M(3, d)
#define SA_FE_5(M, a, b, c, d, e) M(0, a), M(1, b), M(2, c), M(3, d), M(4, e)
#define SA_FE_6(M, a, b, c, d, e, f) M(0, a), M(1, b), M(2, c), M(3, d), M(4, e), M(5, f)

/* Index lists of the table catalogue, INDEXES(IDX_...), turned into:
 *   SA_INDEX_PARAMS(INDEXES(...))  the C parameter list of a row function
 *   SA_INDEX_ARGS(INDEXES(...))    the matching argument list
 *   SA_INDEX_KEY(INDEXES(...))     the C++ key type, snmpapi::Keys<...>      */
#define SA_INDEX_PARAMS(idx) SA_CAT(SA_PARAMS_, idx)
#define SA_INDEX_ARGS(idx) SA_CAT(SA_ARGS_, idx)
#define SA_INDEX_KEY(idx) SA_CAT(SA_KEY_, idx)
#define SA_PARAMS_INDEXES(...) SA_FOR_EACH_I(SA_PARAM, __VA_ARGS__)
#define SA_ARGS_INDEXES(...) SA_FOR_EACH_I(SA_ARG, __VA_ARGS__)
#define SA_KEY_INDEXES(...) ::snmpapi::Keys<SA_FOR_EACH_I(SA_KIND, __VA_ARGS__)>

#define SA_PARAM(i, kind) SA_CAT3(SA_PARAM_, kind)(i)
#define SA_ARG(i, kind) SA_CAT3(SA_ARG_, kind)(i)
#define SA_KIND(i, kind) ::snmpapi::IndexKind::kind

#define SA_PARAM_IDX_INTEGER(i) int32_t a##i
#define SA_PARAM_IDX_GAUGE(i) uint32_t a##i
#define SA_PARAM_IDX_TIMETICKS(i) uint32_t a##i
#define SA_PARAM_IDX_IPADDRESS(i) uint32_t a##i
#define SA_PARAM_IDX_OCTET_STR(i) const uint8_t *a##i, size_t a##i##_len
#define SA_PARAM_IDX_IMPLIED_OCTET_STR(i) const uint8_t *a##i, size_t a##i##_len
#define SA_ARG_IDX_INTEGER(i) a##i
#define SA_ARG_IDX_GAUGE(i) a##i
#define SA_ARG_IDX_TIMETICKS(i) a##i
#define SA_ARG_IDX_IPADDRESS(i) a##i
#define SA_ARG_IDX_OCTET_STR(i) a##i, a##i##_len
#define SA_ARG_IDX_IMPLIED_OCTET_STR(i) a##i, a##i##_len

#endif
