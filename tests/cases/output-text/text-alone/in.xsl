<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text" indent="yes" doctype-system="s"/>
<xsl:template match="/"><a x="1">&lt;<b>&amp;</b><xsl:comment>c</xsl:comment></a></xsl:template>
</xsl:stylesheet>
