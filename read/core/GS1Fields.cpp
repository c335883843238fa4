// The table of application identifiers, made of ranges that share a name.
#include "read/core/GS1Fields.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace Tesk {

namespace {

/// Keys of `digits` digits from `first` to `last`.
struct Range
{
    int digits, first, last;
    int minimum, maximum;
    const char* name;
};

constexpr Range ranges[] = {
    {2, 0, 0, 18, 18, "SSCC"},
    {2, 1, 1, 14, 14, "GTIN"},
    {2, 2, 2, 14, 14, "CONTENT"},
    {2, 10, 10, 1, 20, "BATCH/LOT"},
    {2, 11, 11, 6, 6, "PROD DATE"},
    {2, 12, 12, 6, 6, "DUE DATE"},
    {2, 13, 13, 6, 6, "PACK DATE"},
    {2, 15, 15, 6, 6, "BEST BEFORE"},
    {2, 16, 16, 6, 6, "SELL BY"},
    {2, 17, 17, 6, 6, "USE BY"},
    {2, 20, 20, 2, 2, "VARIANT"},
    {2, 21, 21, 1, 20, "SERIAL"},
    {2, 22, 22, 1, 20, "CPV"},
    {3, 235, 235, 1, 28, "TPX"},
    {3, 240, 240, 1, 30, "ADDITIONAL ID"},
    {3, 241, 241, 1, 30, "CUST. PART NO."},
    {3, 242, 242, 1, 6, "MTO VARIANT"},
    {3, 243, 243, 1, 20, "PCN"},
    {3, 250, 250, 1, 30, "SECONDARY SERIAL"},
    {3, 251, 251, 1, 30, "REF. TO SOURCE"},
    {3, 253, 253, 13, 30, "GDTI"},
    {3, 254, 254, 1, 20, "GLN EXTENSION COMPONENT"},
    {3, 255, 255, 13, 25, "GCN"},
    {2, 30, 30, 1, 8, "VAR. COUNT"},
    {4, 3100, 3105, 6, 6, "NET WEIGHT (kg)"},
    {4, 3110, 3115, 6, 6, "LENGTH (m)"},
    {4, 3120, 3125, 6, 6, "WIDTH (m)"},
    {4, 3130, 3135, 6, 6, "HEIGHT (m)"},
    {4, 3140, 3145, 6, 6, "AREA (m²)"},
    {4, 3150, 3155, 6, 6, "NET VOLUME (l)"},
    {4, 3160, 3165, 6, 6, "NET VOLUME (m³)"},
    {4, 3200, 3205, 6, 6, "NET WEIGHT (lb)"},
    {4, 3210, 3215, 6, 6, "LENGTH (i)"},
    {4, 3220, 3225, 6, 6, "LENGTH (f)"},
    {4, 3230, 3235, 6, 6, "LENGTH (y)"},
    {4, 3240, 3245, 6, 6, "WIDTH (i)"},
    {4, 3250, 3255, 6, 6, "WIDTH (f)"},
    {4, 3260, 3265, 6, 6, "WIDTH (y)"},
    {4, 3270, 3275, 6, 6, "HEIGHT (i)"},
    {4, 3280, 3285, 6, 6, "HEIGHT (f)"},
    {4, 3290, 3295, 6, 6, "HEIGHT (y)"},
    {4, 3300, 3305, 6, 6, "GROSS WEIGHT (kg)"},
    {4, 3310, 3315, 6, 6, "LENGTH (m) log"},
    {4, 3320, 3325, 6, 6, "WIDTH (m) log"},
    {4, 3330, 3335, 6, 6, "HEIGHT (m) log"},
    {4, 3340, 3345, 6, 6, "AREA (m²) log"},
    {4, 3350, 3355, 6, 6, "VOLUME (l) log"},
    {4, 3360, 3365, 6, 6, "VOLUME (m³) log"},
    {4, 3370, 3375, 6, 6, "KG PER m²"},
    {4, 3400, 3405, 6, 6, "GROSS WEIGHT (lb)"},
    {4, 3410, 3415, 6, 6, "LENGTH (i) log"},
    {4, 3420, 3425, 6, 6, "LENGTH (f) log"},
    {4, 3430, 3435, 6, 6, "LENGTH (y) log"},
    {4, 3440, 3445, 6, 6, "WIDTH (i) log"},
    {4, 3450, 3455, 6, 6, "WIDTH (f) log"},
    {4, 3460, 3465, 6, 6, "WIDTH (y) log"},
    {4, 3470, 3475, 6, 6, "HEIGHT (i) log"},
    {4, 3480, 3485, 6, 6, "HEIGHT (f) log"},
    {4, 3490, 3495, 6, 6, "HEIGHT (y) log"},
    {4, 3500, 3505, 6, 6, "AREA (i²)"},
    {4, 3510, 3515, 6, 6, "AREA (f²)"},
    {4, 3520, 3525, 6, 6, "AREA (y²)"},
    {4, 3530, 3535, 6, 6, "AREA (i²) log"},
    {4, 3540, 3545, 6, 6, "AREA (f²) log"},
    {4, 3550, 3555, 6, 6, "AREA (y²) log"},
    {4, 3560, 3565, 6, 6, "NET WEIGHT (t)"},
    {4, 3570, 3575, 6, 6, "NET VOLUME (oz)"},
    {4, 3600, 3605, 6, 6, "NET VOLUME (q)"},
    {4, 3610, 3615, 6, 6, "NET VOLUME (g)"},
    {4, 3620, 3625, 6, 6, "VOLUME (q) log"},
    {4, 3630, 3635, 6, 6, "VOLUME (g) log"},
    {4, 3640, 3645, 6, 6, "VOLUME (i³)"},
    {4, 3650, 3655, 6, 6, "VOLUME (f³)"},
    {4, 3660, 3665, 6, 6, "VOLUME (y³)"},
    {4, 3670, 3675, 6, 6, "VOLUME (i³) log"},
    {4, 3680, 3685, 6, 6, "VOLUME (f³) log"},
    {4, 3690, 3695, 6, 6, "VOLUME (y³) log"},
    {2, 37, 37, 1, 8, "COUNT"},
    {4, 3900, 3909, 1, 15, "AMOUNT"},
    {4, 3910, 3919, 3, 18, "AMOUNT"},
    {4, 3920, 3929, 1, 15, "PRICE"},
    {4, 3930, 3939, 3, 18, "PRICE"},
    {4, 3940, 3943, 4, 4, "PRCNT OFF"},
    {4, 3950, 3955, 6, 6, "PRICE/UoM"},
    {3, 400, 400, 1, 30, "ORDER NUMBER"},
    {3, 401, 401, 1, 30, "GINC"},
    {3, 402, 402, 17, 17, "GSIN"},
    {3, 403, 403, 1, 30, "ROUTE"},
    {3, 410, 410, 13, 13, "SHIP TO LOC"},
    {3, 411, 411, 13, 13, "BILL TO"},
    {3, 412, 412, 13, 13, "PURCHASE FROM"},
    {3, 413, 413, 13, 13, "SHIP FOR LOC"},
    {3, 414, 414, 13, 13, "LOC NO."},
    {3, 415, 415, 13, 13, "PAY TO"},
    {3, 416, 416, 13, 13, "PROD/SERV LOC"},
    {3, 417, 417, 13, 13, "PARTY"},
    {3, 420, 420, 1, 20, "SHIP TO POST"},
    {3, 421, 421, 3, 12, "SHIP TO POST"},
    {3, 422, 422, 3, 3, "ORIGIN"},
    {3, 423, 423, 3, 15, "COUNTRY - INITIAL PROCESS"},
    {3, 424, 424, 3, 3, "COUNTRY - PROCESS"},
    {3, 425, 425, 3, 15, "COUNTRY - DISASSEMBLY"},
    {3, 426, 426, 3, 3, "COUNTRY - FULL PROCESS"},
    {3, 427, 427, 1, 3, "ORIGIN SUBDIVISION"},
    {4, 4300, 4300, 1, 35, "SHIP TO COMP"},
    {4, 4301, 4301, 1, 35, "SHIP TO NAME"},
    {4, 4302, 4302, 1, 70, "SHIP TO ADD1"},
    {4, 4303, 4303, 1, 70, "SHIP TO ADD2"},
    {4, 4304, 4304, 1, 70, "SHIP TO SUB"},
    {4, 4305, 4305, 1, 70, "SHIP TO LOC"},
    {4, 4306, 4306, 1, 70, "SHIP TO REG"},
    {4, 4307, 4307, 2, 2, "SHIP TO COUNTRY"},
    {4, 4308, 4308, 1, 30, "SHIP TO PHONE"},
    {4, 4310, 4310, 1, 35, "RTN TO COMP"},
    {4, 4311, 4311, 1, 35, "RTN TO NAME"},
    {4, 4312, 4312, 1, 70, "RTN TO ADD1"},
    {4, 4313, 4313, 1, 70, "RTN TO ADD2"},
    {4, 4314, 4314, 1, 70, "RTN TO SUB"},
    {4, 4315, 4315, 1, 70, "RTN TO LOC"},
    {4, 4316, 4316, 1, 70, "RTN TO REG"},
    {4, 4317, 4317, 2, 2, "RTN TO COUNTRY"},
    {4, 4318, 4318, 1, 20, "RTN TO POST"},
    {4, 4319, 4319, 1, 30, "RTN TO PHONE"},
    {4, 4320, 4320, 1, 35, "SRV DESCRIPTION"},
    {4, 4321, 4321, 1, 1, "DANGEROUS GOODS"},
    {4, 4322, 4322, 1, 1, "AUTH LEAVE"},
    {4, 4323, 4323, 1, 1, "SIG REQUIRED"},
    {4, 4324, 4324, 10, 10, "NBEF DEL DT."},
    {4, 4325, 4325, 10, 10, "NAFT DEL DT."},
    {4, 4326, 4326, 6, 6, "REL DATE"},
    {4, 7001, 7001, 13, 13, "NSN"},
    {4, 7002, 7002, 1, 30, "MEAT CUT"},
    {4, 7003, 7003, 6, 10, "MEAT CUT"},
    {4, 7004, 7004, 1, 4, "ACTIVE POTENCY"},
    {4, 7005, 7005, 1, 12, "CATCH AREA"},
    {4, 7006, 7006, 6, 6, "FIRST FREEZE DATE"},
    {4, 7007, 7007, 6, 12, "HARVEST DATE"},
    {4, 7008, 7008, 1, 3, "AQUATIC SPECIES"},
    {4, 7009, 7009, 1, 10, "FISHING GEAR TYPE"},
    {4, 7010, 7010, 1, 2, "PROD METHOD"},
    {4, 7020, 7020, 1, 20, "REFURB LOT"},
    {4, 7021, 7021, 1, 20, "FUNC STAT"},
    {4, 7022, 7022, 1, 20, "REV STAT"},
    {4, 7023, 7023, 1, 30, "GIAI - ASSEMBLY"},
    {4, 7030, 7039, 3, 30, "PROCESSOR # s"},
    {4, 7040, 7040, 1, 4, "PROCESSOR # s"},
    {3, 710, 710, 1, 20, "NHRN PZN"},
    {3, 711, 711, 1, 20, "NHRN CIP"},
    {3, 712, 712, 1, 20, "NHRN CN"},
    {3, 713, 713, 1, 20, "NHRN DRN"},
    {3, 714, 714, 1, 20, "NHRN AIM"},
    {4, 7230, 7239, 2, 30, "CERT # s"},
    {4, 7240, 7240, 1, 20, "PROTOCOL"},
    {4, 8001, 8001, 4, 14, "DIMENSIONS"},
    {4, 8002, 8002, 1, 20, "CMT NO."},
    {4, 8003, 8003, 1, 30, "GRAI"},
    {4, 8004, 8004, 1, 30, "GIAI"},
    {4, 8005, 8005, 6, 6, "PRICE PER UNIT"},
    {4, 8006, 8006, 14, 18, "ITIP"},
    {4, 8007, 8007, 1, 34, "IBAN"},
    {4, 8008, 8008, 8, 12, "PROD TIME"},
    {4, 8009, 8009, 1, 50, "OPTSEN"},
    {4, 8010, 8010, 1, 30, "CPID"},
    {4, 8011, 8011, 1, 12, "CPID SERIAL"},
    {4, 8012, 8012, 1, 20, "VERSION"},
    {4, 8013, 8013, 1, 25, "GMN"},
    {4, 8017, 8017, 18, 18, "GSRN - PROVIDER"},
    {4, 8018, 8018, 18, 18, "GSRN - RECIPIENT"},
    {4, 8019, 8019, 1, 10, "SRIN"},
    {4, 8020, 8020, 1, 25, "REF NO."},
    {4, 8026, 8026, 14, 18, "ITIP CONTENT"},
    {4, 8110, 8110, 1, 70, ""},
    {4, 8111, 8111, 4, 4, "POINTS"},
    {4, 8112, 8112, 1, 70, ""},
    {4, 8200, 8200, 1, 70, "PRODUCT URL"},
    {2, 90, 90, 1, 30, "INTERNAL"},
    {2, 91, 99, 1, 90, "INTERNAL"},
};

constexpr std::size_t CountOfRows()
{
    std::size_t count = 0;
    for (const Range& range : ranges)
        count += static_cast<std::size_t>(range.last - range.first + 1);
    return count;
}
static_assert(CountOfRows() == gs1FieldCount);

constexpr std::array<GS1Field, gs1FieldCount> MakeRows()
{
    std::array<GS1Field, gs1FieldCount> rows{};
    std::size_t row = 0;
    for (const Range& range : ranges) {
        for (int number = range.first; number <= range.last; ++number, ++row) {
            rows[row] = {{}, range.digits, range.minimum == range.maximum, range.minimum, range.maximum, range.name};
            for (int i = range.digits - 1, rest = number; i >= 0; --i, rest /= 10)
                rows[row].key[static_cast<std::size_t>(i)] = static_cast<char>('0' + rest % 10);
        }
    }
    return rows;
}

} // namespace

constexpr std::array<GS1Field, gs1FieldCount> GS1Fields = MakeRows();

const GS1Field* FindGS1Field(std::string_view text)
{
    const auto keyOf = [&](const GS1Field& field) { return text.substr(0, static_cast<std::size_t>(field.keyLength)); };
    const auto found = std::partition_point(GS1Fields.begin(), GS1Fields.end(),
                                            [&](const GS1Field& field) { return field.Key() < keyOf(field); });
    return found != GS1Fields.end() && found->Key() == keyOf(*found) ? &*found : nullptr;
}

} // namespace Tesk
