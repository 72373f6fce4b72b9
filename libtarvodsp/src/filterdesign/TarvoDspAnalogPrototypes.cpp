#include "filterdesign/TarvoDspAnalogPrototypes.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspConjugatePairs.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace ondo::analogPrototypes
{
namespace
{
using Cplx = std::complex<double>;

void addPair(ComplexArray<double>& roots, Cplx r)
{
    roots.pushBack({r.real(), r.imag()});
    if (r.imag() != 0.0)
        roots.pushBack({r.real(), -r.imag()});
}

// Bessel poles, normalised to the Butterworth asymptotes: for each order the real pole (odd
// orders) and then one pole of each conjugate pair, upper half plane, by ascending
// imaginary part. Order n holds ceil(n / 2) entries.
constexpr double besselPoles[][2] = {
    // order 1
    {-1, 0},
    // order 2
    {-0.8660254037844386, 0.5},
    // order 3
    {-0.9416000265332067, 0},
    {-0.7456403858480767, 0.7113666249728353},
    // order 4
    {-0.9047587967882448, 0.2709187330038746},
    {-0.6572111716718826, 0.8301614350048732},
    // order 5
    {-0.92644207738776, 0},
    {-0.8515536193688396, 0.4427174639443328},
    {-0.5905759446119191, 0.9072067564574549},
    // order 6
    {-0.909390683047227, 0.1856964396793047},
    {-0.7996541858328287, 0.5621717346937318},
    {-0.5385526816693109, 0.9616876881954276},
    // order 7
    {-0.9194871556490291, 0},
    {-0.8800029341523379, 0.3216652762307741},
    {-0.7527355434093217, 0.6504696305522553},
    {-0.496691725667232, 1.002508508454421},
    // order 8
    {-0.9096831546652911, 0.1412437976671423},
    {-0.8473250802359334, 0.4259017538272934},
    {-0.7111381808485397, 0.7186517314108402},
    {-0.4621740412532123, 1.034388681126901},
    // order 9
    {-0.9154957797499037, 0},
    {-0.8911217017079759, 0.2526580934582164},
    {-0.8148021112269013, 0.50858156896315},
    {-0.6743622686854766, 0.7730546212691185},
    {-0.4331415561553623, 1.06007367013593},
    // order 10
    {-0.9091347320900505, 0.1139583137335511},
    {-0.8688459641284763, 0.343000823376631},
    {-0.7837694413101444, 0.5759147538499949},
    {-0.641751386698832, 0.8175836167191021},
    {-0.408322073286886, 1.081274842819125},
    // order 11
    {-0.9129067244518985, 0},
    {-0.8963656705721169, 0.2080480375071032},
    {-0.8453044014712964, 0.4178696917801249},
    {-0.7546938934722308, 0.6319150050721851},
    {-0.6126871554915195, 0.8547813893314768},
    {-0.3868149510055095, 1.099117466763122},
    // order 12
    {-0.9084478234140686, 0.09550636521345041},
    {-0.8802534342016832, 0.2871779503524228},
    {-0.8217296939939076, 0.4810212115100677},
    {-0.7276681615395162, 0.6792961178764695},
    {-0.5866369321861475, 0.8863772751320727},
    {-0.3679640085526314, 1.114373575641546},
    // order 13
    {-0.9110914665984182, 0},
    {-0.8991314665475196, 0.1768342956161044},
    {-0.8625094198260551, 0.3547413731172991},
    {-0.7987460692470972, 0.5350752120696801},
    {-0.7026234675721276, 0.7199611890171304},
    {-0.5631559842430192, 0.9135900338325103},
    {-0.3512792323389817, 1.127591548317705},
    // order 14
    {-0.9077932138396491, 0.08219639941940153},
    {-0.8869506674916446, 0.2470079178765334},
    {-0.8441199160909851, 0.4131653825102694},
    {-0.7766591387063626, 0.5819170677377609},
    {-0.6794256425119225, 0.7552857305042031},
    {-0.5418766775112306, 0.9373043683516926},
    {-0.336386822490203, 1.13917229783986},
    // order 15
    {-0.9097482363849062, 0},
    {-0.9006981694176978, 0.1537681197278439},
    {-0.8731264620834984, 0.3082352470564267},
    {-0.8256631452587149, 0.4642348752734327},
    {-0.7556027168970723, 0.6229396358758263},
    {-0.6579196593111004, 0.7862895503722519},
    {-0.5224954069658331, 0.9581787261092528},
    {-0.3229963059766444, 1.14941615458363},
    // order 16
    {-0.9072099595087002, 0.07214211304111731},
    {-0.8911723070323643, 0.2167089659900576},
    {-0.8584264231521322, 0.3621697271802063},
    {-0.8074790293236004, 0.5092933751171799},
    {-0.7356166304713119, 0.6591950877860395},
    {-0.6379502514039066, 0.8137453537108762},
    {-0.504760644442476, 0.9767137477799086},
    {-0.3108782755645385, 1.15855284119933},
    // order 17
    {-0.9087141161336388, 0},
    {-0.9016273850787279, 0.1360267995173024},
    {-0.8801100704438625, 0.2725347156478803},
    {-0.8433414495836128, 0.4100759282910021},
    {-0.7897644147799701, 0.5493724405281085},
    {-0.7166893842372346, 0.6914936286393607},
    {-0.6193710717342137, 0.8382497252826986},
    {-0.4884629337672707, 0.9932971956316782},
    {-0.2998489459990074, 1.166761272925668},
    // order 18
    {-0.9067004324162776, 0.06427924106393068},
    {-0.8939764278132456, 0.1930374640894758},
    {-0.8681095503628832, 0.3224204925163258},
    {-0.8281885016242831, 0.4529385697815914},
    {-0.7726285030739557, 0.5852778162086639},
    {-0.698782144500527, 0.7204696509726628},
    {-0.6020482668090644, 0.8602708961893664},
    {-0.4734268069916153, 1.008234300314801},
    {-0.2897592029880485, 1.174183010600058},
    // order 19
    {-0.9078934217899399, 0},
    {-0.9021937639390656, 0.1219568381872026},
    {-0.8849290585034383, 0.2442590757549817},
    {-0.8555768765618422, 0.3672925896399872},
    {-0.8131725551578201, 0.491536503556246},
    {-0.7561260971541627, 0.6176483917970175},
    {-0.6818424412912439, 0.7466272357947761},
    {-0.5858613321217828, 0.8801817131014564},
    {-0.4595043449730982, 1.021768776912671},
    {-0.2804866851439361, 1.18093162845329},
    // order 20
    {-0.9062570115576768, 0.0579617802778495},
    {-0.8959150941925766, 0.1740317175918704},
    {-0.8749560316673335, 0.2905559296567909},
    {-0.8427907479956664, 0.4078917326291931},
    {-0.7984251191290602, 0.526494238881713},
    {-0.7402780309646765, 0.6469975237605224},
    {-0.6658120544829929, 0.7703721701100757},
    {-0.5707026806915716, 0.8982829066468254},
    {-0.4465700698205148, 1.034097702560842},
    {-0.2719299580251653, 1.187099379810886},
    // order 21
    {-0.9072262653142963, 0},
    {-0.9025428073192694, 0.1105252572789856},
    {-0.8883808106664449, 0.221306921508435},
    {-0.8643915813643203, 0.3326258512522187},
    {-0.8299435470674447, 0.4448177739407957},
    {-0.7840287980408347, 0.5583186348022857},
    {-0.7250839687106612, 0.6737426063024383},
    {-0.6506315378609467, 0.7920349342629497},
    {-0.5564766488918568, 0.9148198405846728},
    {-0.4345168906815267, 1.045382255856986},
    {-0.2640041595834026, 1.192762031948052},
    // order 22
    {-0.9058702269930871, 0.05277490828999903},
    {-0.8972983138153532, 0.1584351912289865},
    {-0.8799661455640174, 0.2644363039201535},
    {-0.8534754036851689, 0.3710389319482321},
    {-0.8171682088462721, 0.4785619492202782},
    {-0.7700332930556816, 0.5874255426351151},
    {-0.710530545641879, 0.6982266265924525},
    {-0.6362427683267832, 0.8118875040246348},
    {-0.5430983056306306, 0.9299947824439877},
    {-0.4232528745642628, 1.055755605227546},
    {-0.2566376987939319, 1.197982433555213},
    // order 23
    {-0.9066732476324991, 0},
    {-0.9027564979912508, 0.1010534335314045},
    {-0.8909283242471254, 0.2023024699381225},
    {-0.8709469395587415, 0.3039581993950041},
    {-0.8423805948021127, 0.4062657948237602},
    {-0.8045561642053178, 0.5095305912227259},
    {-0.7564660146829884, 0.6141594859476034},
    {-0.6965966033912709, 0.7207341374753049},
    {-0.6225903228771341, 0.830155830281298},
    {-0.5304922463810195, 0.9439760364018306},
    {-0.4126986617510148, 1.065328794475513},
    {-0.2497697202208956, 1.202813187870698},
    // order 24
    {-0.9055312363372773, 0.04844006654047869},
    {-0.8983105104397869, 0.145405613387361},
    {-0.8837358034555707, 0.2426335234401384},
    {-0.8615278304016356, 0.3403202112618626},
    {-0.8312326466813242, 0.4386985933597307},
    {-0.7921695462343487, 0.5380628490968016},
    {-0.7433392285088533, 0.6388084216222569},
    {-0.6832565803536521, 0.7415032695091649},
    {-0.609622156737833, 0.8470292433077197},
    {-0.5185914574820319, 0.9569048385259057},
    {-0.4027853855197517, 1.074195196518675},
    {-0.2433481337524877, 1.207298683731973},
    // order 25
    {-0.9062073871811711, 0},
    {-0.9028833390228025, 0.09307713118510301},
    {-0.8928551459883554, 0.1863068969804302},
    {-0.8759497989677865, 0.2798521321771411},
    {-0.8518616886554023, 0.3738977875907596},
    {-0.8201226043936878, 0.4686668574656966},
    {-0.7800496278186502, 0.5644441210349714},
    {-0.7306549271849968, 0.6616149647357751},
    {-0.6704827128029558, 0.7607348858167838},
    {-0.5972898661335563, 0.8626676330388032},
    {-0.5073362861078469, 0.9689006305344871},
    {-0.3934529878191081, 1.082433927173832},
    {-0.2373280669322031, 1.211476658382566},
};
constexpr int largestBesselOrder = 25;

// Elliptic functions by descending Landen transformations: the moduli k1, k2, ... of the
// sequence, each the square of k / (1 + k'), down to rounding size. The count is capped so
// that a modulus rounded to 1 cannot loop.
constexpr double landenTolerance = 0x1p-52;

std::vector<double> landen(double k)
{
    std::vector<double> v;
    while (k > landenTolerance && v.size() < 64)
    {
        const double kp = std::sqrt(std::max(0.0, 1.0 - k * k));
        k = (k / (1.0 + kp)) * (k / (1.0 + kp));
        v.push_back(k);
    }
    return v;
}

// The Jacobi cd and sn at u K (u in quarter periods), ascending from the trigonometric
// limit through the Landen moduli.
Cplx ascend(Cplx w, const std::vector<double>& v)
{
    for (auto it = v.rbegin(); it != v.rend(); ++it)
        w = (1.0 + *it) * w / (1.0 + *it * w * w);
    return w;
}

Cplx cde(Cplx u, double k)
{
    return ascend(std::cos(u * (std::numbers::pi / 2.0)), landen(k));
}

Cplx sne(Cplx u, double k)
{
    return ascend(std::sin(u * (std::numbers::pi / 2.0)), landen(k));
}

// The complete elliptic integral K(k) in units of pi/2 times the product of the Landen terms.
double ellipticK(double k)
{
    double product = std::numbers::pi / 2.0;
    for (double v : landen(k))
        product *= 1.0 + v;
    return product;
}

// The remainder of x by y, symmetric about 0.
double symmetricRemainder(double x, double y)
{
    double z = std::fmod(x, y);
    if (std::abs(z) > y / 2.0)
        z -= y * (z > 0.0 ? 1.0 : -1.0);
    return z;
}

// The inverse of cde: u with cd(u K, k) = w, reduced to the fundamental period.
Cplx acde(Cplx w, double k)
{
    const std::vector<double> v = landen(k);
    for (std::size_t n = 0; n < v.size(); ++n)
    {
        const double previous = n == 0 ? k : v[n - 1];
        w = w / (1.0 + std::sqrt(1.0 - w * w * previous * previous)) * 2.0 / (1.0 + v[n]);
    }
    const Cplx u = 2.0 / std::numbers::pi * std::acos(w);
    const double ratio = ellipticK(std::sqrt(1.0 - k * k)) / ellipticK(k);
    return {symmetricRemainder(u.real(), 4.0), symmetricRemainder(u.imag(), 2.0 * ratio)};
}

Cplx asne(Cplx w, double k)
{
    return 1.0 - acde(w, k);
}

// The degree equation: the modulus k whose order-N response has selectivity given by k1.
double solveDegreeEquation(int order, double k1)
{
    const double k1p = std::sqrt(1.0 - k1 * k1);
    double product = 1.0;
    for (int i = 1; i <= order / 2; ++i)
        product *= sne((2.0 * i - 1.0) / order, k1p).real();
    const double kp = std::pow(k1p, order) * std::pow(product, 4.0);
    return std::sqrt(1.0 - kp * kp);
}
} // namespace

ZeroPoleGain butterworth(int order)
{
    ZeroPoleGain model;
    for (int k = order + 1; k <= 3 * order - 1; k += 2)
    {
        const double angle = k * std::numbers::pi / (2.0 * order);
        model.poles.pushBack({std::cos(angle), std::sin(angle)});
    }
    return model;
}

ZeroPoleGain chebyshevType1(int order, double rippleDb)
{
    ZeroPoleGain model;
    if (order < 1)
        return model;
    const double ripple = std::clamp(rippleDb, 0.01, 30.0);
    const double epsilon = std::sqrt(std::pow(10.0, 0.1 * ripple) - 1.0);
    const double mu = std::asinh(1.0 / epsilon) / order;
    std::vector<double> cosines, sines;
    for (int k = 1; k <= 2 * order - 1; k += 2)
    {
        const double theta = k * std::numbers::pi / (2.0 * order) + std::numbers::pi / 2.0;
        cosines.push_back(std::cos(theta));
        sines.push_back(std::sin(theta));
    }
    // Averaging each pole with its mirror keeps conjugates exact.
    Cplx product = 1.0;
    for (int i = 0; i < order; ++i)
    {
        const auto a = static_cast<std::size_t>(i), b = static_cast<std::size_t>(order - 1 - i);
        const Cplx pole(std::sinh(mu) * 0.5 * (cosines[a] + cosines[b]), std::cosh(mu) * 0.5 * (sines[a] - sines[b]));
        model.poles.pushBack({pole.real(), pole.imag()});
        product *= -pole;
    }
    model.gain = product.real();
    if (order % 2 == 0)
        model.gain /= std::sqrt(epsilon * epsilon + 1.0);
    return model;
}

ZeroPoleGain bessel(int order)
{
    ZeroPoleGain model;
    if (order < 1)
        return model;
    if (order > largestBesselOrder)
    {
        model.poles.resize(static_cast<std::size_t>(order));
        return model;
    }
    int start = 0;
    for (int n = 1; n < order; ++n)
        start += (n + 1) / 2;
    for (int i = 0; i < (order + 1) / 2; ++i)
    {
        const auto* p = besselPoles[start + i];
        addPair(model.poles, {p[0], p[1]});
    }
    return model;
}

ZeroPoleGain elliptic(int order, double passbandRippleDb, double stopbandAttenuationDb)
{
    ZeroPoleGain model;
    if (order < 1)
        return model;
    const double rp = std::clamp(passbandRippleDb, 0.01, 30.0);
    const double rs = std::max(stopbandAttenuationDb, rp + 1.0);
    const double epsilonP = std::sqrt(std::pow(10.0, rp / 10.0) - 1.0);
    const double epsilonS = std::sqrt(std::pow(10.0, rs / 10.0) - 1.0);
    const double k1 = epsilonP / epsilonS;
    const double k = solveDegreeEquation(order, k1);
    if (!(k < 1.0))
        throw Exception("FilterOrderTooLarge", ONDO_SOURCE_LOCATION);

    const Cplx j(0.0, 1.0);
    const Cplx w0 = -j * asne(j / epsilonP, k1) / static_cast<double>(order);
    for (int i = 1; i <= order / 2; ++i)
    {
        const double u = (2.0 * i - 1.0) / order;
        addPair(model.zeros, j / (k * cde(u, k)));
        addPair(model.poles, j * cde(u - j * w0, k));
    }
    if (order % 2 == 1)
        addPair(model.poles, {(j * sne(j * w0, k)).real(), 0.0});

    sortIntoConjugatePairs(model.zeros, 2.220446049250313e-14);
    sortIntoConjugatePairs(model.poles, 2.220446049250313e-14);
    Cplx ratio = order % 2 == 0 ? std::pow(10.0, -rp / 20.0) : 1.0;
    for (const auto& p : model.poles)
        ratio *= -Cplx(p.re, p.im);
    for (const auto& z : model.zeros)
        ratio /= -Cplx(z.re, z.im);
    model.gain = std::abs(ratio);
    return model;
}
} // namespace ondo::analogPrototypes
