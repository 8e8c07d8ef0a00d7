// SPDX-License-Identifier: Apache-2.0
// x^b with one b for all elements. For some b there is a function of its own: the call goes on through that
// function's dispatch record, at the level of this kernel, and bad elements are reported under that
// function's name. Where its value or status is not that of the power, the power's kernel takes the elements.
#include "vector/channel/thread_state.hpp"
#include "vector/power/power.hpp"

TMK_TIER_OPEN
namespace {

// Which elements the other function treats differently, by their bits: a comparison of values might trap.
template <class Real>
struct differences {
  using bits = typename format<Real>::bits;
  static constexpr bits minus_infinity = format<Real>::sign | format<Real>::infinity;
  static constexpr int bias = format<Real>::bias;

  // Roots keep the sign of zero, and have no value at -infinity.
  static bool of_root(bits x) { return x == format<Real>::sign || x == minus_infinity; }
  static bool of_root_cubed(bits x) { return x == minus_infinity; }
  // Reciprocals report neither overflow nor underflow: |x| <= 2^-(bias + 1), |x| > 2^(bias - 1).
  static bool of_reciprocal(bits x) {
    constexpr bits last_infinite = bits{1} << (format<Real>::fraction_bits - 2);
    constexpr bits last_normal = bits{2 * bias - 1} << format<Real>::fraction_bits;
    const bits magnitude = x & ~format<Real>::sign;
    return magnitude - 1 < last_infinite ||
           magnitude - last_normal - 1 < format<Real>::infinity - last_normal - 1;
  }
  // Cube roots of negative numbers exist.
  static bool of_cube_root(bits x) { return (x & format<Real>::sign) != 0; }
};

// The functions of one precision that are powers themselves, in EP alone those of thirds: to half the bits, a
// third is what it is rounded to.
template <class Real>
struct known_power {
  Real exponent;
  bool by_thirds;
  const VtmDispatchRecord* record;
  bool (*differs)(typename format<Real>::bits);
};
#define TMK_KNOWN_POWERS(letter, Real)                                                                 \
  {                                                                                                    \
    {Real(-1), false, &tmk_vtm_kernel_##letter##Inv_ttab, differences<Real>::of_reciprocal},           \
        {Real(-0.5), false, &tmk_vtm_kernel_##letter##InvSqrt_ttab, differences<Real>::of_root},       \
        {Real(0.5), false, &tmk_vtm_kernel_##letter##Sqrt_ttab, differences<Real>::of_root},           \
        {Real(1.5), false, &tmk_vtm_kernel_##letter##Pow3o2_ttab, differences<Real>::of_root_cubed},   \
        {Real(-1) / 3, true, &tmk_vtm_kernel_##letter##InvCbrt_ttab, differences<Real>::of_cube_root}, \
        {Real(1) / 3, true, &tmk_vtm_kernel_##letter##Cbrt_ttab, differences<Real>::of_cube_root},     \
        {Real(2) / 3, true, &tmk_vtm_kernel_##letter##Pow2o3_ttab, differences<Real>::of_cube_root},   \
  }
template <class Real>
constexpr known_power<Real> known_powers[] = TMK_KNOWN_POWERS(s, Real);
template <>
constexpr known_power<double> known_powers<double>[] = TMK_KNOWN_POWERS(d, double);

// While calls take an array in parts, reports count from its beginning; a caller's own base stays.
class report_base {
 public:
  explicit report_base(const void* array) : found_(vtmInterfInputVecorPointer) {
    if (found_ == nullptr) vtmInterfInputVecorPointer = array;
  }
  ~report_base() { vtmInterfInputVecorPointer = found_; }
  report_base(const report_base&) = delete;
  report_base& operator=(const report_base&) = delete;

 private:
  const void* found_;
};

// The first element from i on that k's function treats differently. Registers without a negative number, or
// of numbers whose reciprocals are normal, have none.
template <class Real>
int32_t first_difference(const known_power<Real>& k, int32_t i, int32_t n, const Real* a) {
  constexpr Real least_inverted =
      from_bits<Real>(typename format<Real>::bits{1} << format<Real>::fraction_bits);
  const auto suspicious = [&](const batch<Real>& x) {
    if (k.exponent == Real(-1))
      return lane_bits<Real>(
          magnitude_outside<Real, to_bits(least_inverted), to_bits(1 / least_inverted)>(x));
    return lane_bits<Real>(outside<Real, typename format<Real>::bits{1}, format<Real>::infinity>(
        bits_as<typename tested<Real>::bits>(x)));
  };
  while (i < n) {
    const int32_t end = std::min(i + lanes<Real>, n);
    if (end - i < lanes<Real> || suspicious(load(a + i)) != 0)
      for (int32_t j = i; j < end; ++j)
        if (k.differs(to_bits(a[j]))) return j;
    i = end;
  }
  return n;
}

template <class Real, level Level>
void powx(const char* name, int32_t n, const Real* a, Real b, Real* r) {
  const auto power = [=](int32_t count, const Real* x, Real* y) {
    const auto reference = [](const Real* p, Real e, Real* q) {
      return reference_power(power_domain::whole, p, &e, q);
    };
    run<power_to_scalar<Real, Level>>(name, reference, count, pack{x}, pack{y}, b);
  };
  const auto is_b = [b](const known_power<Real>& k) {
    return to_bits(k.exponent) == to_bits(b) && (Level == level::ep || !k.by_thirds);
  };
  const auto& known = known_powers<Real>;
  const auto* const k = std::find_if(std::begin(known), std::end(known), is_b);
  if (k == std::end(known)) return power(n, a, r);

  constexpr int slot = Level == level::la ? TMK_SLOT_LA : Level == level::ha ? TMK_SLOT_HA : TMK_SLOT_EP;
  const auto function = reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(k->record->kernel[slot]);
  const report_base base(a);
  for (int32_t i = 0; i < n;) {
    const int32_t end = first_difference(*k, i, n, a);
    if (end > i) function(end - i, a + i, r + i);
    for (i = end; i < n && k->differs(to_bits(a[i])); ++i) power(1, a + i, r + i);
  }
}

}  // namespace
TMK_TIER_CLOSE

#define TMK_POWX(letter, Level, tag)                                                 \
  extern "C" void TMK_KERNEL_NAME(letter, Powx, TMK_TIER, tag)                       \
      TMK_ROW_KERNEL_PARAMETERS(letter, scalar_exponent) {                           \
    tmk::powx<TMK_REAL_##letter, tmk::level::Level>("v" #letter "Powx", n, a, b, r); \
  }
// The wide tiers' LA is HA, as it is for other powers.
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_POWX(s, la, LAynn)
TMK_POWX(d, la, LAynn)
#endif
TMK_POWX(s, ha, HAynn)
TMK_POWX(d, ha, HAynn)
TMK_POWX(s, ep, EPnnn)
TMK_POWX(d, ep, EPnnn)
