# One mistake gives one finding.
use strict;
use warnings;
use feature 'signatures';

use FindBin;
use Test::More;
use lib "$FindBin::Bin/lib";

use VELTest;

my $rules = <<'TEXT';
RULES:
  OBJECT: EDGE
    Required Parameters = Kind
    Optional Parameters = Active
    PARAMETER: Kind
      Allowed Values = Inlet, Outlet, Wall
    END
    PARAMETER: Active
      Type = Logical
    END
    CASE: Open
      If Parameter = Kind
      Is One Of = Inlet, Outlet
      Required Parameters = Rate Kind
      Optional Objects = PROFILE
    END
    CASE: Closed
      If Parameter = Kind
      Is One Of = Wall
      Optional Parameters = Motion
    END
    CASE: Mass
      If Parameter = Rate Kind
      Is One Of = Mass
      Required Parameters = Mass Rate
    END
    CASE: On
      If Parameter = Active
      Is One Of = Yes
      Optional Parameters = Power
    END
  END
  SINGLETON: PROFILE
    Parents = EDGE
  END
END
TEXT

# What is found in an edge with these lines, its path left out.
sub in_edge ($text) {
    return findings(database($rules, "EDGE: e\n$text\nEND")) =~ s{^/EDGE:e(?:/|(?=:))}{}gmr;
}

my $dependent = "Rate Kind = Mass\nMass Rate = 1\nPROFILE:\nEND";
is in_edge("Kind = Inlet\n$dependent"), '', 'everything is correct';
is in_edge("Kind = Inlett\n$dependent"), <<'TEXT', 'a wrong value: nothing that depends on it is reported';
Kind: "Inlett" is not allowed here; did you mean Inlet? [not-allowed]
TEXT
is in_edge($dependent), <<'TEXT', 'a missing parameter: nothing that depends on it is reported';
: required parameter "Kind" is missing [missing-parameter]
TEXT
is in_edge("Kind = Inlet\nMass Rate = 1"), <<'TEXT', 'a missing parameter that a case requires';
: required parameter "Rate Kind" is missing [missing-parameter]
TEXT
is in_edge("Kind = Inlett\nMass Rate = 1"), <<'TEXT', 'and a parameter that depends on that one';
Kind: "Inlett" is not allowed here; did you mean Inlet? [not-allowed]
TEXT
is in_edge("Kind = Wall\nActive = perhaps\nPower = 1"), <<'TEXT', 'a logical that is not one';
Active: "perhaps" is not a logical value; use Yes or No [wrong-type]
TEXT
is in_edge("Kind = Wall\nPower = 1\nPROFILE:\nEND"), <<'TEXT', 'but it is reported after a correct value and if an optional parameter is missing';
Power: "Power" is only allowed when Active = Yes [unknown-parameter]
PROFILE: PROFILE is only allowed when its EDGE has Kind = Inlet, Outlet [not-allowed]
TEXT
is in_edge("Kind = Inlett\nMotionn = 1"), <<'TEXT', 'a name that no case has is a separate mistake';
Kind: "Inlett" is not allowed here; did you mean Inlet? [not-allowed]
Motionn: EDGE has no parameter "Motionn"; correct the name or remove the parameter [unknown-parameter]
TEXT

subtest 'a misspelt required name is not also reported as missing' => sub {
    is in_edge("Knd = Inlet\n$dependent"), <<'TEXT', 'a parameter; what depends on it is not reported either';
Knd: EDGE has no parameter "Knd"; did you mean Kind? [unknown-parameter]
TEXT
    is in_edge("Kind = Wall\nActve = Yes\nPower = 1"), <<'TEXT', 'an optional parameter';
Actve: EDGE has no parameter "Actve"; did you mean Active? [unknown-parameter]
TEXT
    is in_edge("Colour = red"), <<'TEXT', 'a name that is not similar is another mistake';
Colour: EDGE has no parameter "Colour"; correct the name or remove the parameter [unknown-parameter]
: required parameter "Kind" is missing [missing-parameter]
TEXT
    is in_edge("Kinds = Inlet\nKind = Wall"), <<'TEXT', 'and so is a second similar name';
Kinds: EDGE has no parameter "Kinds"; did you mean Kind? [unknown-parameter]
TEXT
};

subtest 'a misspelt required object is not also reported as missing' => sub {
    my $house = "RULES:\nOBJECT: HOUSE\nRequired Objects = ROOF, DOOR\nEND\nOBJECT: DOOR\nEND\nSINGLETON: ROOF\nEND\nEND";
    my $said  = sub ($text) { return findings(database($house, "HOUSE: h\n$text\nEND")) };
    is $said->("ROOFF:\nEND\nDOOR: d\nEND"), <<'TEXT', 'the misspelt type is reported';
/HOUSE:h/ROOFF: Unknown object type "ROOFF"; did you mean ROOF? [unknown-object]
TEXT
    is $said->("Door: d\nEND\nROOF:\nEND"), <<'TEXT', 'upper and lower case are different';
/HOUSE:h/Door:d: Unknown object type "Door"; did you mean DOOR? [unknown-object]
TEXT
    is $said->("GARDEN: g\nEND\nROOF:\nEND"), <<'TEXT', 'a type that is not similar is another mistake';
/HOUSE:h: required object DOOR is missing [missing-object]
/HOUSE:h/GARDEN:g: Unknown object type "GARDEN"; correct the type or remove the object [unknown-object]
TEXT
    my $database  = database($house, "HOUSE: h\nROOFF:\nEND\nDOOR: d\nEND\nEND");
    my $validator = VEL::Validate->new($database);
    findings_left($validator, $database) for 1 .. 2;
    $database->deleteObj('/HOUSE:h/ROOFF');
    is findings_left($validator, $database), "/HOUSE:h: required object ROOF is missing [missing-object]\n",
        'once the misspelt one is deleted, the right one is missing';
};

subtest 'a list with the wrong separator' => sub {
    my $rules = "RULES:\nOBJECT: A\nRequired Parameters = L\nPARAMETER: L\nType = Integer List\nMinimum Entries = 2\nEND\nEND\nEND";
    my $said  = sub ($list) { return findings(database($rules, "A: a\nL = $list\nEND")) =~ s{^/A:a/L: }{}gmr };
    is $said->('1; 2'), qq("1; 2" is not a whole number; use a value such as 10; separate the entries with commas [wrong-type]\n),
        'is one mistake';
    is $said->('x'), <<'TEXT', 'few and wrong entries are two';
Expected at least 2 entries, found 1 [too-few-entries]
"x" is not a whole number; use a value such as 10 [wrong-type]
TEXT
};

subtest 'when the value is fixed, the rest is checked again' => sub {
    my $database  = database($rules, "EDGE: e\nKind = Inlett\n$dependent\nEND");
    my $validator = VEL::Validate->new($database);
    is scalar(split /\n/, findings_left($validator, $database)), 1, 'one finding';
    $database->setStringValue('/EDGE:e/Kind', 'Wall');
    like findings_left($validator, $database), qr/"Rate Kind"/, 'the object is checked';
    is findings_left($validator, $database), <<'TEXT', 'all of what another value would need';
/EDGE:e/Rate Kind: "Rate Kind" is only allowed when Kind = Inlet, Outlet [unknown-parameter]
/EDGE:e/PROFILE: PROFILE is only allowed when its EDGE has Kind = Inlet, Outlet [not-allowed]
TEXT
    like $validator->validateParam('/EDGE:e/Rate Kind'), qr/unknown-parameter/, 'the check of a single parameter does the same';
    $database->setStringValue('/EDGE:e/Kind', 'Inlett');
    is $validator->validateParam('/EDGE:e/Rate Kind'), undef, 'or nothing';
};

subtest 'a name of an object' => sub {
    my $api = with_libraries();
    $api->parseVELData([ 'FLOW:', 'DOMAIN: d', 'Kind = Fluid', 'Substance = water', 'END', 'END' ], 0);
    is findings($api->{database}), '/FLOW/DOMAIN:d/Substance: There is no SUBSTANCE or MIXTURE named "water"; '
        . "use one of Water, Air, Steel, Copper, Aluminium; did you mean Water? [no-such-object]\n",
        'the allowed names are listed and one is suggested';
};

subtest 'allowed values and allowed objects' => sub {
    my $both = "RULES:\nOBJECT: PUMP\nFree Parameters = Yes\nPARAMETER: From\nAllowed Values = None, All\n"
        . "Allowed Objects = TANK\nEND\nEND\nOBJECT: TANK\nEND\nEND";
    my $said = sub ($from, $tanks) {
        return findings(database($both, "PUMP: p\nFrom = $from\nEND\n$tanks")) =~ s{^/PUMP:p/From: | \[.*\n}{}gr;
    };
    is $said->('uper', "TANK: upper\nEND"),
        'There is no TANK named "uper"; use one of None, All, upper; did you mean upper?', 'the finding names both';
    is $said->('none', "TANK: upper\nEND"),
        'There is no TANK named "none"; use one of None, All, upper; did you mean None?', 'and suggests either';
    is $said->('elsewhere', ''), 'There is no TANK named "elsewhere"; use one of None, All', 'without an object';
    my $many = join "\n", map { "TANK: t$_\nEND" } 1 .. 500;
    is $said->('elsewhere', $many), 'There is no TANK named "elsewhere"; use one of None, All, '
        . join(', ', map { "t$_" } 1 .. 10) . ', ...', 'no more than twelve are listed, the values first';
};

done_testing;
