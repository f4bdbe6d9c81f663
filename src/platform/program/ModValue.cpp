#include "platform/program/ModValue.h"

namespace vrk::program {

ModValue listOf(std::initializer_list<double> numbers)
{
    ModValue value{ModValue::Kind::List, 0, {}};
    for (const double number : numbers)
        value.list.push_back(ModValue::Of(number));
    return value;
}

ModValue poseValue(const rob::Posed& pose)
{
    const rob::Posd& p = pose.position;
    const rob::Orientd& o = pose.orientation;
    ModValue value{ModValue::Kind::List, 0, {}};
    value.list = {listOf({p.x, p.y, p.z}), listOf({o.w, o.x, o.y, o.z})};
    return value;
}

Shape takeNumbers(const ModValue& value, std::vector<double>& numbers)
{
    if (value.kind == ModValue::Kind::Unknown)
        return Shape::IsUnknown;
    if (!value.isList(numbers.size()))
        return Shape::IsWrong;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (value.list[i].kind == ModValue::Kind::Unknown)
            return Shape::IsUnknown;
        if (!value.list[i].isNumber())
            return Shape::IsWrong;
        numbers[i] = value.list[i].number;
    }
    return Shape::Fits;
}

Shape takePose(const ModValue& value, rob::Posed& pose)
{
    if (value.kind == ModValue::Kind::Unknown)
        return Shape::IsUnknown;
    if (!value.isList(2))
        return Shape::IsWrong;
    std::vector<double> p(3), q(4);
    const Shape place = takeNumbers(value.list[0], p);
    const Shape turn = takeNumbers(value.list[1], q);
    if (place != Shape::Fits || turn != Shape::Fits)
        return place == Shape::IsWrong || turn == Shape::IsWrong ? Shape::IsWrong : Shape::IsUnknown;
    pose = {rob::Posd(p[0], p[1], p[2]), rob::Orientd(q[0], q[1], q[2], q[3])};
    return Shape::Fits;
}

} // namespace vrk::program
