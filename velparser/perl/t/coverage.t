# Every field of every rule that ships is met by data that it decides about; the
# report tells how many there are, and the test fails for one that is not.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VEL::Path qw(split_path);
use VELTest;

use RuleSample;

my $api      = with_libraries();
my $database = $api->{database};
my $model    = VEL::Model->of($database);
my $sample   = RuleSample->new($api);

my $validator = validator($database);

# Every field of every rule, by its path: how often it has decided something.
my %met;
my %fields_of;
for my $kind (qw(OBJECT SINGLETON PARAMETER CASE STEP UPGRADE)) {
    $database->getObjectsByType($kind, \my @paths);
    for my $path (@paths) {
        $database->getChildParamList($path, \my @names);
        $met{"$path/$_"} = 0 for @names;
        $fields_of{$path} = { map { $_ => 1 } @names };
    }
}

my @wrong;

sub note_met ($path, $complaint) {
    die "$path is not a field of a rule" if !exists $met{$path};
    $met{$path}++;
    push @wrong, "$path: $complaint" if defined $complaint && $complaint ne '';
    return;
}

# --- Values ---------------------------------------------------------------------

# What is said of a parameter while it has this value.
sub said ($path, $value) {
    $database->getStringValue($path, \my $before);
    $database->setStringValue($path, $value);
    my $text = $validator->validateParam($path) // '';
    $database->setStringValue($path, $before);
    return $text;
}

sub takes ($path, $value) {
    my $text = said($path, $value);
    return $text eq '' ? () : qq(takes "$value" with "$text");
}

sub refuses ($path, $value, $identifier) {
    my $text = said($path, $value);
    return $text =~ /\[\Q$identifier\E\]/ ? () : qq(says "$text" of "$value", not $identifier);
}

# A list of values with this one in it.
sub filled ($parameter, $entry) {
    return join ', ', ($entry) x ($parameter->{minimum} || 1);
}

sub decide_type ($path, $parameter) {
    my $good = RuleSample::good_value($parameter);
    return takes_a_list($path, $parameter) if $parameter->{values} || $parameter->{objects};
    my $kind = $parameter->{type};
    return takes($path, $good) if $kind eq 'String';
    my $bad = { Logical => 'perhaps', Integer => '1.5', Real => 'much' }->{$kind};
    return (takes($path, $good), refuses($path, filled($parameter, $bad), 'wrong-type'));
}

# Two entries where there may be several, else none.
sub takes_a_list ($path, $parameter) {
    my $two = RuleSample::good_list($parameter, 2);
    return takes($path, $two) if $parameter->{list};
    return said($path, $two) ne q{} ? () : "takes a list";
}

sub decide_allowed_values ($path, $parameter) {
    $api->getAllowedParamStrings($path, \my @offered);
    my @complaints = map { takes($path, filled($parameter, $_)) } @{ $parameter->{values} };
    push @complaints, 'not all are offered' if "@offered" !~ /^\Q@{ $parameter->{values} }\E/;
    return @complaints if $parameter->{objects};
    return (@complaints, refuses($path, filled($parameter, '?'), 'not-allowed'));
}

sub decide_allowed_objects ($path, $parameter) {
    return (takes($path, filled($parameter, 'Sample')),
        refuses($path, filled($parameter, '?'), 'no-such-object'));
}

sub decide_units ($path, $parameter) {
    my $good = RuleSample::good_entry($parameter);
    my ($number) = $good =~ /^([^ ]+)/;
    my @complaints = (takes($path, filled($parameter, $good)),
        refuses($path, filled($parameter, "$number [cd]"), 'wrong-unit'));
    return (@complaints, takes($path, filled($parameter, $number))) if $parameter->{units} eq '1';
    return (@complaints, refuses($path, filled($parameter, $number), 'missing-unit'));
}

# The bound itself, and something beyond it.
sub decide_bound ($path, $parameter, $text, $sign, $identifier) {
    my ($number, $unit) = $text =~ /^([^ ]+)(.*)$/;
    my $beyond = filled($parameter, $number + $sign * (abs($number) || 1) . $unit);
    my $at     = filled($parameter, $text);
    return (refuses($path, $beyond, $identifier),
        $parameter->{exclusive} ? refuses($path, $at, $identifier) : takes($path, $at));
}

sub decide_count ($path, $parameter, $count, $step, $identifier) {
    return (takes($path, RuleSample::good_list($parameter, $count)),
        refuses($path, RuleSample::good_list($parameter, $count + $step), $identifier));
}

sub decide_expert ($path, $expected) {
    return $api->isItemExpert($path) == $expected ? () : 'is not what it says';
}

sub decide_editable ($path, $parameter) {
    my @complaints;
    for my $level (0, 2) {
        $database->setValidationLevel($level);
        my $expected = $parameter->{editable} && ($level == 0 || $parameter->{running}) ? 1 : 0;
        push @complaints, "is editable at level $level against its rule"
            if $api->isParamEditable($path) != $expected;
    }
    $database->setValidationLevel(0);
    return @complaints;
}

sub decide_expressions ($path, $parameter) {
    my $text = RuleSample::with_unit($parameter, 1) . ' + ' . RuleSample::with_unit($parameter, 1);
    return refuses($path, $text, 'bad-expression') if !$parameter->{expressions};
    return takes($path, $text);
}

# What `explain` shows of a field.
sub decide_shown ($path, $field, $text) {
    $api->explainItem($path, \my @lines);
    return (grep { $_ eq "$field = $text" } @lines) ? () : qq("$field = $text" is not shown);
}

my %decide = (
    'Description' => sub ($path, $parameter) {
        return decide_shown($path, 'Description', $parameter->{description});
    },
    'Type'            => \&decide_type,
    'Allowed Values'  => \&decide_allowed_values,
    'Allowed Objects' => \&decide_allowed_objects,
    'Units'           => \&decide_units,
    'Lower Bound' => sub ($path, $parameter) {
        return decide_bound($path, $parameter, $parameter->{lower}, -1, 'below-bound');
    },
    'Upper Bound' => sub ($path, $parameter) {
        return decide_bound($path, $parameter, $parameter->{upper}, 1, 'above-bound');
    },
    'Bounds Exclusive' => sub ($path, $parameter) { return decide_shown($path, 'Bounds Exclusive', 'Yes') },
    'Minimum Entries'  => sub ($path, $parameter) {
        return decide_count($path, $parameter, $parameter->{minimum}, -1, 'too-few-entries');
    },
    'Maximum Entries' => sub ($path, $parameter) {
        return decide_count($path, $parameter, $parameter->{maximum}, 1, 'too-many-entries');
    },
    'Default' => sub ($path, $parameter) {
        my $text = $parameter->{default};
        return (takes($path, $text), decide_shown($path, 'Default', $text));
    },
    'Editable'               => \&decide_editable,
    'Editable While Running' => \&decide_editable,
    'Expert'                 => sub ($path, $parameter) { return decide_expert($path, $parameter->{expert}) },
    'Expressions'            => \&decide_expressions,
);

# The rules that speak of the parameter here, the one that holds last.
sub rules_of ($type, $variant, $name) {
    my $home   = home($type);
    my @inside = ($home, map { "$home/CASE:$_->{label}" } @{ $variant->{cases} });
    return grep { $fields_of{$_} } "/RULES/PARAMETER:$name", map { "$_/PARAMETER:$name" } @inside;
}

# Where the rule of a type, or what it inherits, is written.
sub home ($type) {
    my $path = "/RULES/$type->{kind}:$type->{type}";
    my $from;
    $database->getStringValue("$path/Inherits", \$from);
    return defined $from ? "/RULES/$from" : $path;
}

sub decide_parameters ($path, $type) {
    my $variant = $model->variant_at($path, $type);
    for my $name (grep { $database->havePath("$path/$_") } @{ $variant->{order} }) {
        my $parameter = $type->parameter($variant, $name);
        my %stated;
        for my $rule (rules_of($type, $variant, $name)) {
            $stated{$_} = "$rule/$_" for keys %{ $fields_of{$rule} };
        }
        for my $field (sort keys %stated) {
            note_met($stated{$field}, join '; ', $decide{$field}->("$path/$name", $parameter));
        }
    }
    return;
}

# --- Objects ----------------------------------------------------------------------

sub object_says ($path) { return $validator->validateObject($path) // '' }

# Each name of the list is missed when it goes.
sub miss_parameters ($path, @names) {
    my @complaints;
    for my $name (@names) {
        $database->getStringValue("$path/$name", \my $value);
        $database->deleteParam("$path/$name");
        push @complaints, qq("$name" is not missed)
            if object_says($path) !~ /required parameter "\Q$name\E" is missing \[missing-parameter\]/;
        $database->createParam("$path/$name", $value);
    }
    return @complaints;
}

sub miss_objects ($path, @words) {
    my @complaints;
    for my $word (@words) {
        my $child = "$path/" . RuleSample::component($sample->type_named($word));
        $database->deleteObj($child);
        push @complaints, "$word is not missed"
            if object_says($path) !~ /required object \Q$word\E is missing \[missing-object\]/;
        $database->createObject($child, 0);
    }
    return @complaints;
}

sub allow_parameters ($path, @names) {
    $api->getAllowedParams($path, \my @allowed, 0);
    my %allowed = map { $_ => 1 } @allowed;
    return map { qq("$_" is not offered) } grep { !$allowed{$_} } @names;
}

sub allow_objects ($path, @words) {
    my @complaints;
    for my $word (@words) {
        my $child = "$path/" . RuleSample::component($sample->type_named($word));
        my $is_new = !$database->havePath($child);
        $database->createObject($child, 0) if $is_new;
        push @complaints, "$word is not let in" if object_says($child) =~ /\[(?:not-allowed|wrong-parent)\]/;
        $database->deleteObj($child) if $is_new;
    }
    return @complaints;
}

sub decide_parents ($path, $type) {
    my @complaints = object_says($path) =~ /\[wrong-parent\]/ ? 'is not allowed in its own place' : ();
    my $inside = $type->{parents}{'/'} ? '/LANGUAGE' : '';
    $database->createObject($inside, 0) if $inside && !$database->havePath($inside);
    my $astray = "$inside/" . RuleSample::component($type);
    my $is_new = !$database->havePath($astray);
    $database->createObject($astray, 0) if $is_new;
    push @complaints, 'is allowed anywhere' if object_says($astray) !~ /\[wrong-parent\]/;
    $database->deleteObj($astray) if $is_new;
    return @complaints;
}

# Among all objects that are allowed beside it the object is saved by priority, the
# highest first.
sub decide_priority ($path, $priority) {
    my ($parent) = split_path($path);
    my $below  = $parent eq '/' ? '' : $parent;
    my ($word) = $parent =~ m{/([^/:]*)[^/]*\z};
    my @beside = grep { $_->{parents}{ $word || '/' } } $sample->types;
    my @new    = grep { !$database->havePath($_) } map { "$below/" . RuleSample::component($_) } @beside;
    $database->createObject($_, 0) for @new;
    my @order = map { priority_of($_) } saved_types($below);
    $database->deleteObj($_) for @new;
    return "is in the wrong place: @order" if join(' ', sort { $b <=> $a } @order) ne "@order";
    return (grep { $_ == $priority } @order) && @order >= @beside ? () : 'is not saved';
}

# The types of the blocks in an object, as they are saved.
sub saved_types ($path) {
    $database->getFormattedVEL('/', 0, \my @lines);
    my $depth = $path =~ tr{/}{};
    my $indent = '  ' x $depth;
    return map { $sample->type_named($_) // () } map { /^$indent([A-Z][^:=]*):/ ? $1 : () } @lines;
}

sub priority_of ($type) {
    $database->getStringValue("/RULES/$type->{kind}:$type->{type}/Output Ordering Priority", \my $text);
    return $text;
}

sub decide_object ($path, $type) {
    my $variant = $model->variant_at($path, $type);
    my $rule    = "/RULES/$type->{kind}:$type->{type}";
    my %of = (
        'Description' => sub { return decide_shown($path, 'Description', $type->{description}) },
        'Help Topic'  => sub { return decide_shown($path, 'Help Topic', $type->{help}) },
        'Parents'     => sub { return decide_parents($path, $type) },
        'Required Parameters' => sub { return miss_parameters($path, @{ $type->{required} }) },
        'Optional Parameters' => sub { return allow_parameters($path, @{ $type->{optional} }) },
        'Required Objects'    => sub { return miss_objects($path, @{ $type->{required_objects} }) },
        'Optional Objects'    => sub { return allow_objects($path, @{ $type->{optional_objects} }) },
        'Free Parameters' => sub {
            $api->getAllowedParams($path, \my @names, 0);
            return "@names" eq '-1' ? () : 'are not free';
        },
        'Maximum Count' => sub { return decide_shown($path, 'Maximum Count', $type->{maximum}) },
        'Expert'        => sub { return decide_expert($path, $type->{expert}) },
        'Inherits'      => sub { return $type->plain_variant->{order} ? () : 'gives nothing' },
    );
    for my $field (sort keys %{ $fields_of{$rule} }) {
        if ($field eq 'Output Ordering Priority') {
            $database->getStringValue("$rule/$field", \my $priority);
            note_met("$rule/$field", join '; ', decide_priority($path, $priority));
            next;
        }
        note_met("$rule/$field", join '; ', $of{$field}->());
    }
    return;
}

# A case holds for each of its values and for no other.
sub decide_case ($path, $type, $case) {
    my $rule   = home($type) . "/CASE:$case->{label}";
    my $switch = "$path/$case->{parameter}";
    my @complaints;
    for my $value (@{ $case->{values} }) {
        $database->setStringValue($switch, $value);
        my $holds = grep { $_ == $case } @{ $model->variant_at($path, $type)->{cases} };
        push @complaints, qq(does not hold for "$value") if !$holds;
        push @complaints, takes($switch, $value);
    }
    $database->setStringValue($switch, $case->{values}[0]);
    note_met("$rule/$_", join '; ', @complaints) for 'If Parameter', 'Is One Of';
    my %of = (
        'Required Parameters' => sub { return miss_parameters($path, @{ $case->{required} }) },
        'Optional Parameters' => sub { return allow_parameters($path, @{ $case->{optional} }) },
        'Required Objects'    => sub { return miss_objects($path, @{ $case->{required_objects} }) },
        'Optional Objects'    => sub { return allow_objects($path, @{ $case->{optional_objects} }) },
        'Description'         => sub { return () },
    );
    for my $field (grep { $of{$_} } sort keys %{ $fields_of{$rule} }) {
        note_met("$rule/$field", join '; ', $of{$field}->());
    }
    return;
}

my %unlike;
for my $type ($sample->types) {
    for my $variant ($sample->variants($type)) {
        my $path = $sample->load($type, $variant);
        my $text = object_says($path);
        $unlike{"$path: $text"} = 1 if $text ne '';
        decide_parameters($path, $type);
        decide_case($path, $type, $_) for @{ $variant->{cases} };
        decide_object($path, $type) if $variant == $type->plain_variant;
        if (!$type->{free}) {
            $database->createParam("$path/No Such Parameter", 1);
            push @wrong, "$path takes any name"
                if object_says($path) !~ m{/No Such Parameter: .*\[unknown-parameter\]};
        }
    }
}
$sample->clear;

is join("\n", sort keys %unlike), '', 'data with everything that the rules require has no findings';

# --- Upgrades -----------------------------------------------------------------------

# Data that has what the step looks for, and nothing else.
sub old_data ($step) {
    my $type = $step->{'Object Type'};
    my $known = $sample->type_named($type);
    my $header = $known && $known->{kind} eq 'SINGLETON' ? "$type:" : "$type: old";
    my @lines  = !exists $step->{'Parameter'} || $step->{'Action'} eq 'Add Parameter' ? ()
        : "$step->{'Parameter'} = " . ($step->{'Old Value'} // 'anything');
    return ('LANGUAGE:', 'Version = 0.1', 'END', $header, @lines, 'END');
}

for my $upgrade ($model->rules->upgrades) {
    note_met("$upgrade->{path}/$_", '') for keys %{ $upgrade->{fields} };
    for my $step (@{ $upgrade->{blocks} }) {
        my $alone = api(join "\n", 'RULES:', "UPGRADE: $upgrade->{name}", "STEP: $step->{name}",
            (map { "$_ = $step->{fields}{$_}" } sort keys %{ $step->{fields} }), ('END') x 3);
        my $error = $alone->parseVELData([ old_data($step->{fields}) ], 0);
        die $error if $error;
        my @changes = split /\n/, $alone->updateSolverVEL;
        note_met("$step->{path}/$_", @changes == 2 ? '' : 'changes nothing') for keys %{ $step->{fields} };
    }
}

is join("\n", @wrong), '', 'every field has the effect that it documents';

# --- Report -------------------------------------------------------------------------

sub report () {
    my %count;
    for my $path (keys %met) {
        my ($kind, $field) = $path =~ m{/([A-Z]+):[^/]*/([^/]+)\z};
        $kind =~ s/SINGLETON/OBJECT/;
        $count{"$kind $field"}[0]++;
        $count{"$kind $field"}[1]++ if $met{$path};
    }
    note sprintf '%-38s %7s %7s', 'field', 'rules', 'met';
    note sprintf '%-38s %7d %7d', $_, $count{$_}[0], $count{$_}[1] // 0 for sort keys %count;
    my $met = grep { $met{$_} } keys %met;
    note sprintf '%-38s %7d %7d', 'all', scalar keys %met, $met;
    return;
}

report();
is join("\n", grep { !$met{$_} } sort keys %met), '', 'and no field is left out';
done_testing;
