# What is wrong with rules: each mistake is reported once, with what was meant, and
# the field is then not used.
use strict;
use warnings;
use feature 'signatures';

use FindBin;
use Test::More;
use lib "$FindBin::Bin/lib";

use VEL::Rules;
use VELTest;

sub rules ($text) {
    return VEL::Rules->new(VEL::Rules::Source::read_tree(database("RULES:\n$text\nEND")));
}

sub faults ($text) { return join '', map { "$_\n" =~ s{^/RULES/| \[bad-rule\]}{}gr } rules($text)->faults }

subtest 'places' => sub {
    my $flow = "SINGLETON: FLOW\nParents = /\nOptional Objects = WALL\nEND\nOBJECT: WALL\nParents = FLOW\nEND\n";
    is faults($flow), '', 'in a list, and with that parent';
    is faults("${flow}OBJECT: FAN\nParents = FLOW, WALL\nEND"), "OBJECT:FAN/Parents: FAN is not listed in FLOW or WALL; add it to Required Objects or Optional Objects there\n",
        'a type that no list of its parents names';
    is faults("${flow}OBJECT: FAN\nEND\nOBJECT: TOP\nParents = /, FLOW\nEND"), '', 'a type that is allowed anywhere';
    is faults("${flow}OBJECT: BASE\nParents = FLOW\nEND\nOBJECT: FAN\nInherits = OBJECT:BASE\nParents = /\nEND"), '',
        'a rule that is there for its heirs';
    is faults("${flow}OBJECT: FAN\nParents = WALL\nEND\nOBJECT: HOUSE\nRequired Objects = FAN\nEND"), <<'TEXT', 'a type that requires an object that it may not contain';
OBJECT:FAN/Parents: FAN is not listed in WALL; add it to Required Objects or Optional Objects there
OBJECT:HOUSE/Required Objects: Parents of FAN does not list HOUSE; add it there or remove FAN here
TEXT
    is faults(<<'END'), <<'TEXT', 'a case that requires such an object';
      OBJECT: HOUSE
        Parents = /
        Required Parameters = Kind
        CASE: Warm
          If Parameter = Kind
          Is One Of = Warm
          Required Objects = STOVE
        END
      END
      OBJECT: STOVE
        Parents = /
      END
END
OBJECT:HOUSE/CASE:Warm/Required Objects: Parents of STOVE does not list HOUSE; add it there or remove STOVE here
TEXT
};

subtest 'a name that is required and optional' => sub {
    is faults("OBJECT: FAN\nRequired Parameters = A, B\nOptional Parameters = B, C\nEND"),
        "OBJECT:FAN/Optional Parameters: \"B\" is already required; remove it from this list\n", 'a parameter';
    is faults("OBJECT: HUB\nEND\nOBJECT: FAN\nRequired Objects = HUB\nOptional Objects = HUB\nEND"),
        "OBJECT:FAN/Optional Objects: \"HUB\" is already required; remove it from this list\n", 'a type';
    is faults(<<'END'), "OBJECT:FAN/CASE:Big/Optional Parameters: \"D\" is already required; remove it from this list\n", 'in a case; but a case may require what is otherwise optional';
      OBJECT: FAN
        Required Parameters = Kind
        Optional Parameters = C
        CASE: Big
          If Parameter = Kind
          Is One Of = Big
          Required Parameters = C, D
          Optional Parameters = D
        END
      END
END
};

subtest 'fields for lists only' => sub {
    my $fan = sub ($fields) { return "OBJECT: FAN\nFree Parameters = Yes\nPARAMETER: P\n$fields\nEND\nEND" };
    is faults($fan->("Type = Real\nMinimum Entries = 2\nMaximum Entries = 3")), <<'TEXT', 'on a single value';
OBJECT:FAN/PARAMETER:P/Minimum Entries: "Minimum Entries" and "Maximum Entries" are only allowed for lists, not for Real; remove them or change the type
TEXT
    is faults($fan->("Units = m\nLower Bound = 0 [m]\nUpper Bound = 9 [m]")), <<'TEXT', 'a missing type is also one mistake';
OBJECT:FAN/PARAMETER:P/Units: "Units" and "Lower Bound" and "Upper Bound" are only allowed for numbers, not for String; remove them or change the type
TEXT
    is faults($fan->("Type = Real List\nMinimum Entries = 2")), '', 'on a list';
    is faults($fan->("Type = real list\nMinimum Entries = 2\nUnits = m")),
        "OBJECT:FAN/PARAMETER:P/Type: Unknown type \"real list\"; did you mean Real List?\n", 'if the type is wrong';
    is faults("PARAMETER: P\nMinimum Entries = 2\nEND"), '', 'a general rule leaves the type to others';
};

subtest 'a name in the wrong letter case' => sub {
    is faults(<<'END'), <<'TEXT', 'are suggested correctly';
      OBJECT: HOP ADDITION
        optional parameters = Weight
      END
      OBJECT: BREW
        Required Objects = Hop Addition, Malt
        Inherits = OBJECT:Hop Addition
        parameter: Active
        END
        PARAMETER: Active
          Type = logical
        END
      END
      UPGRADE: Version 1.0
        STEP: one
          Action = rename parameter
          Object Type = BREW
        END
      END
END
OBJECT:HOP ADDITION/optional parameters: OBJECT has no field "optional parameters"; did you mean Optional Parameters?
OBJECT:BREW/Required Objects: Unknown object type "Hop Addition", "Malt"; did you mean HOP ADDITION?
OBJECT:BREW/parameter:Active: "parameter" is not allowed here; did you mean PARAMETER?
OBJECT:BREW/PARAMETER:Active/Type: Unknown type "logical"; did you mean Logical?
UPGRADE:Version 1.0/STEP:one/Action: Unknown action "rename parameter"; did you mean Rename Parameter?
OBJECT:BREW/Inherits: Unknown rule OBJECT:Hop Addition; did you mean HOP ADDITION?
TEXT
};

subtest 'a rule whose kind is misspelt' => sub {
    my $house = "OBJECT: HOUSE\nParents = /\nRequired Objects = DOOR\nRequired Parameters = Front\n"
        . "PARAMETER: Front\nAllowed Objects = DOOR\nEND\nEND\nOBJECT: BELL\nParents = DOOR\nEND\n";
    is faults("${house}Object: DOOR\nParents = HOUSE\nOptional Objects = BELL\nEND"),
        "Object:DOOR: \"Object\" is not allowed here; did you mean OBJECT?\n", 'is reported, not those that name its type';
    is faults("${house}THING: DOOR\nParents = HOUSE\nEND"), <<'TEXT', 'a kind that is not similar to any describes no type';
OBJECT:HOUSE/Required Objects: Unknown object type "DOOR"; correct the name or add a rule for it
OBJECT:HOUSE/PARAMETER:Front/Allowed Objects: Unknown object type "DOOR"; correct the name or add a rule for it
OBJECT:BELL/Parents: Unknown object type "DOOR"; correct the name or add a rule for it
THING:DOOR: "THING" is not allowed here; use one of OBJECT, PARAMETER, SINGLETON, UPGRADE
TEXT
    is faults("OBJECT: A\nParents = /\nEND\nOBJECT: B\nParents = OBJECT:A\nEND"),
        "OBJECT:B/Parents: Unknown object type \"OBJECT:A\"; did you mean A?\n", 'a list of types names no kinds';
};

subtest 'a faulty field is reported once and then ignored' => sub {
    my $text = <<'END';
      PARAMETER: Speed
        Type = Real
        Units = metres per second
        Lower Bound = 0 [m s^-1]
      END
      OBJECT: FAN
        Required Parameters = Speed, Width, Mode
        PARAMETER: Speed
          Upper Bound = 9 [m s^-1]
        END
        PARAMETER: Width
          Type = Real
          Units = m
          Lower Bound = 5 [m]
          Upper Bound = 1 [m]
        END
        PARAMETER: Mode
          Type = Nmber
          Units = m
        END
      END
      OBJECT: BIG FAN
        Inherits = OBJECT:FAN
        PARAMETER: Width
          Description = the same
        END
      END
END
    is faults($text), <<'TEXT', 'once, even if several rules inherit it';
PARAMETER:Speed/Units: Unknown unit "metres per second"; use a unit such as kg m^-3
OBJECT:FAN/PARAMETER:Mode/Type: Unknown type "Nmber"; use one of String, String List, Integer, Integer List, Real, Real List, Logical, Logical List
OBJECT:FAN/PARAMETER:Width/Upper Bound: No value is allowed between the lower bound 5 [m] and the upper bound 1 [m]; correct one of them
TEXT
    my $data = sub ($speed) { return "BIG FAN: f\nSpeed = $speed\nWidth = 9 [m]\nMode = any\nEND" };
    is findings(database("RULES:\n$text\nEND", $data->($_)), 1), '', "no unit and no bound is checked: $_"
        for '1', '-1 [m s^-1]', '99 [m s^-1]', '3 [furlong]';
    like findings(database("RULES:\n$text\nEND", $data->('fast')), 1), qr/"fast" is not a number/, 'the type is';
};

subtest "a case's condition is inherited like its lists" => sub {
    my $text = <<'END';
      OBJECT: FAN
        Required Parameters = Kind
        CASE: Big
          If Parameter = Kind
          Is One Of = Big
          Required Parameters = Hub
        END
      END
      OBJECT: HEIR
        Inherits = OBJECT:FAN
        CASE: Big
          Required Parameters = Rim
        END
      END
      OBJECT: OTHER
        Inherits = OBJECT:HEIR
        CASE: Big
          Is One Of = Huge
        END
      END
END
    is faults($text), '', 'a case of an heir does not need its own condition';
    my $required = sub ($type, $kind) {
        my $variant = rules($text)->type('OBJECT', $type)->variant(sub ($name) { return $kind });
        return join ' ', @{ $variant->{required} };
    };
    is $required->('HEIR',  'Big'),  'Kind Rim', 'the condition is that of the inherited rule';
    is $required->('HEIR',  'Huge'), 'Kind',     'and no other';
    is $required->('OTHER', 'Huge'), 'Kind Rim', 'a part of it may be stated again';
    is $required->('OTHER', 'Big'),  'Kind',     'which replaces that part';
    is faults("OBJECT: FAN\nEND\nOBJECT: HEIR\nInherits = OBJECT:FAN\nCASE: Odd\nRequired Parameters = X\nEND\nEND"),
        "OBJECT:HEIR/CASE:Odd: \"If Parameter\" and \"Is One Of\" are missing\n", 'a case without any condition is a mistake';
};

subtest 'the order of output is not inherited' => sub {
    my $database = database(<<'TEXT', "A: a\nEND\nHEIR: h\nEND\nZ: z\nEND\n");
RULES:
  OBJECT: Z
    Output Ordering Priority = 5
  END
  OBJECT: HEIR
    Inherits = OBJECT:Z
  END
END
TEXT
    is formatted($database), "Z: z\nEND\nA: a\nEND\nHEIR: h\nEND\n", 'an heir states its own or has none';
};

subtest 'dimensionless units' => sub {
    my $text = <<'TEXT';
RULES:
  OBJECT: MIX
    Free Parameters = Yes
    PARAMETER: Share
      Type = Real
      Units = %
      Lower Bound = 0
      Upper Bound = 100 [%]
    END
    PARAMETER: Fraction
      Type = Real
      Units = kg kg^-1
      Upper Bound = 1
    END
    PARAMETER: Ratio
      Type = Real
      Units = 1
    END
    PARAMETER: Angle
      Type = Real
      Units = degree
    END
  END
END
TEXT
    is faults($text =~ s/^RULES:|END\n\z//gr), '', 'a bound may also have no unit';
    my $said = sub ($line) { return findings(database($text, "MIX: m\n$line\nEND"), 1) =~ s{^/MIX:m/}{}r };
    is $said->($_), '', "$_ is right"
        for map { ("$_ = 0.5", "$_ = 0.5 [%]", "$_ = 0.5 [1]", "$_ = 0.5 [kg kg^-1]", "$_ = 0.5 [m/m]") } qw(Share Fraction Ratio);
    like $said->("$_ = 0.5 [rad]"), qr/wrong dimension/, "an angle is no $_" for qw(Share Fraction Ratio);
    like $said->('Angle = 5'), qr/missing-unit/, 'and a number is not an angle';
    like $said->('Share = 101'), qr/above-bound/, 'a number without a unit has the unit of the rule';
    like $said->('Fraction = 101 [%]'), qr/above-bound/, 'one with a unit is converted';
};

done_testing;
